#ifndef QV_COMPONENT_PRIVATE_H
#define QV_COMPONENT_PRIVATE_H

#include "qv/sys/qv_types.h"

/** The components of the library in the order of their start; they stop in the opposite order. Each is a pair of
    functions, `qv___<Name>Startup` and `qv___<Name>Shutdown`, in the source of its family. The start of a component may
    use all components before it. The version component is started before all of these, with the texts about the
    application. */
#define QV___COMPONENTS( COMPONENT )                                                                                   \
    COMPONENT( Mem )                                                                                                   \
    COMPONENT( Unique )                                                                                                \
    COMPONENT( Error )                                                                                                 \
    COMPONENT( Obj )                                                                                                   \
    COMPONENT( StackTrace )                                                                                            \
    COMPONENT( String )                                                                                                \
    COMPONENT( Buffer )                                                                                                \
    COMPONENT( Vector )                                                                                                \
    COMPONENT( Dict )                                                                                                  \
    COMPONENT( Generation )                                                                                            \
    COMPONENT( Thread )                                                                                                \
    COMPONENT( ThreadPriority )                                                                                        \
    COMPONENT( FormatFlags )                                                                                           \
    COMPONENT( CharsetFlags )                                                                                          \
    COMPONENT( NlfFlags )                                                                                              \
    COMPONENT( RuntimeFlags )                                                                                          \
    COMPONENT( RuntimePath )                                                                                           \
    COMPONENT( RuntimeOs )                                                                                             \
    COMPONENT( RuntimeHardware )                                                                                       \
    COMPONENT( RuntimeVariant )                                                                                        \
    COMPONENT( RuntimeComputerName )                                                                                   \
    COMPONENT( RuntimeComputerInfo )                                                                                   \
    COMPONENT( BoxedNull )                                                                                             \
    COMPONENT( BoxedBool )                                                                                             \
    COMPONENT( Timestamp )                                                                                             \
    COMPONENT( Time )                                                                                                  \
    COMPONENT( Timezone )                                                                                              \
    COMPONENT( Timer )                                                                                                 \
    COMPONENT( Charset )                                                                                               \
    COMPONENT( Random )                                                                                                \
    COMPONENT( RuntimePlatform )                                                                                       \
    COMPONENT( Abort )

#define QV___COMPONENT_DECLARE( Name )                                                                                 \
    QV_API void qv___##Name##Startup( void );                                                                          \
    QV_API void qv___##Name##Shutdown( void );

QV___COMPONENTS( QV___COMPONENT_DECLARE )

#undef QV___COMPONENT_DECLARE

/** Keeps copies of the texts, each of which may be null, in blocks of the C library, since the memory component is not
    started yet. */
QV_API void qv___RuntimeVersionStartup(
    const char *applicationIdentifier, const char *applicationFriendlyName, const char *applicationVersion );
QV_API void qv___RuntimeVersionShutdown( void );

/** Start and stop all of them, the version component first and last. */
QV_API void qv___RuntimeComponentsStartup(
    const char *applicationIdentifier, const char *applicationFriendlyName, const char *applicationVersion );
QV_API void qv___RuntimeComponentsShutdown( void );

#endif
