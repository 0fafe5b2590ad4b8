#ifndef QV_RUNTIME_PRIVATE_H
#define QV_RUNTIME_PRIVATE_H

#include "qv/runtime/qv_component_private.h"

/** The product's texts from the module record, usable at any time. */
QV_API const char *qv___RuntimeVersionProductNameCstr( void );
QV_API const char *qv___RuntimeVersionProductFriendlyNameCstr( void );
QV_API const char *qv___RuntimeVersionProductVendorNameCstr( void );
QV_API const char *qv___RuntimeVersionProductCopyrightCstr( void );
QV_API const char *qv___RuntimeVersionProductBuildTimeCstr( void );

/** The application's texts that the library was started with, or null. */
QV_API const char *qv___RuntimeVersionApplicationIdentifierCstr( void );
QV_API const char *qv___RuntimeVersionApplicationFriendlyNameCstr( void );
QV_API const char *qv___RuntimeVersionApplicationVersionCstr( void );

/** Friendly names as static text, usable at any time. A value out of range ends the process. */
QV_API const char *qv___RuntimeOsFriendlyNameCstr( QV_INT os );
QV_API const char *qv___RuntimeHardwareFriendlyNameCstr( QV_INT hw );
QV_API const char *qv___RuntimeVariantFriendlyNameCstr( QV_INT var );

namespace qv
{
/** Identifiers as static text. */
const char *identifierOfOs( QV_INT os );
const char *identifierOfHardware( QV_INT hw );
} // namespace qv

#endif
