#ifndef QV_RUNTIME_ENUM_PRIVATE_H
#define QV_RUNTIME_ENUM_PRIVATE_H

#include "qv/runtime/qv_runtime_private.h"
#include "qv/sys/qv_abort.h"

#include <span>

namespace qv
{
/** What a value of an enumeration is called. The value itself is the place in a table of these. */
struct RuntimeNames
{
    const char *enumerant;
    const char *identifier;
    const char *friendlyName;
};

/** Enters one enumerant, which must be a new one. */
void enterEnumerant( QV_ENUM **en, const char *enumerant, QV_INT value );

/** Makes the Enum and the two Dicts of a table. The caller owns them. */
void enterNames(
    std::span< const RuntimeNames > names, QV_ENUM **en, QV_DICT **toIdentifier, QV_DICT **fromIdentifier );

/** The value of an identifier or -1; the identifier of a value, which must have one, as a new reference. */
QV_INT     valueOfIdentifier( QV_DICT *fromIdentifier, QV_STRING *qvs );
QV_STRING *identifierOfValue( QV_DICT *toIdentifier, QV_INT value );
} // namespace qv

/** Defines everything that an enumeration of the run time has of its names: `qvRuntime<Name>FromString` and its
    sisters, its start-up and its shutdown. `value` is what the functions call their argument, NAMES the table. */
#define QV___RUNTIME_ENUM( Name, NAME, value, NAMES )                                                                  \
    QV_ENUM *qv___Runtime##Name##Enum               = nullptr;                                                         \
    QV_DICT *qv___Runtime##Name##ToIdentifierDict   = nullptr;                                                         \
    QV_DICT *qv___Runtime##Name##FromIdentifierDict = nullptr;                                                         \
                                                                                                                       \
    void qv___Runtime##Name##Startup( void )                                                                           \
    {                                                                                                                  \
        qv::enterNames(                                                                                                \
            NAMES, &qv___Runtime##Name##Enum, &qv___Runtime##Name##ToIdentifierDict,                                   \
            &qv___Runtime##Name##FromIdentifierDict );                                                                 \
    }                                                                                                                  \
                                                                                                                       \
    void qv___Runtime##Name##Shutdown( void )                                                                          \
    {                                                                                                                  \
        qv::drop( qv___Runtime##Name##FromIdentifierDict );                                                            \
        qv::drop( qv___Runtime##Name##ToIdentifierDict );                                                              \
        qv::drop( qv___Runtime##Name##Enum );                                                                          \
    }                                                                                                                  \
                                                                                                                       \
    QV_INT qvRuntime##Name##FromString( QV_STRING *qvs )                                                               \
    {                                                                                                                  \
        QV_CHECK( qvs );                                                                                               \
        return qvEnumParse( qv___Runtime##Name##Enum, qvs );                                                           \
    }                                                                                                                  \
                                                                                                                       \
    QV_STRING *qvRuntime##Name##ToString( QV_INT value )                                                               \
    {                                                                                                                  \
        QV___RUNTIME_ENUM_CHECK( NAME, value );                                                                        \
        return qvEnumGenerate( qv___Runtime##Name##Enum, value );                                                      \
    }                                                                                                                  \
                                                                                                                       \
    QV_INT qvRuntime##Name##FromIdentifier( QV_STRING *qvs )                                                           \
    {                                                                                                                  \
        QV_CHECK( qvs );                                                                                               \
        return qv::valueOfIdentifier( qv___Runtime##Name##FromIdentifierDict, qvs );                                   \
    }                                                                                                                  \
                                                                                                                       \
    QV_STRING *qvRuntime##Name##ToIdentifier( QV_INT value )                                                           \
    {                                                                                                                  \
        QV___RUNTIME_ENUM_CHECK( NAME, value );                                                                        \
        return qv::identifierOfValue( qv___Runtime##Name##ToIdentifierDict, value );                                   \
    }                                                                                                                  \
                                                                                                                       \
    QV_STRING *qvRuntime##Name##FriendlyName( QV_INT value )                                                           \
    {                                                                                                                  \
        QV___RUNTIME_ENUM_CHECK( NAME, value );                                                                        \
        return qvStringCreateFromCstr( NAMES[value].friendlyName, -1 );                                                \
    }                                                                                                                  \
                                                                                                                       \
    const char *qv___Runtime##Name##FriendlyNameCstr( QV_INT value )                                                   \
    {                                                                                                                  \
        QV___RUNTIME_ENUM_CHECK( NAME, value );                                                                        \
        return NAMES[value].friendlyName;                                                                              \
    }

#define QV___RUNTIME_ENUM_CHECK( NAME, value )                                                                         \
    QV_CHECK_AS( QV_RUNTIME_##NAME##_OK( value ), "QV_RUNTIME_" #NAME "_OK( " #value " )" )

#endif
