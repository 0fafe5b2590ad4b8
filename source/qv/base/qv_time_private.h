#ifndef QV_TIME_PRIVATE_H
#define QV_TIME_PRIVATE_H

#include "qv/runtime/qv_family.h"

struct QV_TIME : QV_OBJ
{
    QV_INT year;
    QV_INT month;  /**< 1 to 12 */
    QV_INT day;    /**< 1 to 31, whatever the month */
    QV_INT hour;   /**< 0 to 23 */
    QV_INT minute; /**< 0 to 59 */
    QV_INT second; /**< 0 to 61 */
};

/** When the library was started, as a new Time, which the caller owns. */
QV_API QV_TIME *qv___TimeStarted( void );

#endif
