#ifndef QV_HELD_PRIVATE_H
#define QV_HELD_PRIVATE_H

#include "qv/runtime/qv_ref.h"

namespace qv
{
/** Ends the hold on a value that functions of other families could reach through the caller's variable: while it is
    held, what they change there is a copy. The call goes on with the value that it began with; what the variable has become
    meanwhile is given up. Before it is written it has to be made private, since others may hold it now. */
template< class T >
void goOnWith( T **variable, Ref< T > &held )
{
    if( *variable != held )
        assign( variable, held.give() );
    else
        held.reset();
}
} // namespace qv

#endif
