// The binary form.

#include "qv/base/qv_store.h"

#include "qv/base/qv_decoder.h"
#include "qv/base/qv_dict_private.h"
#include "qv/base/qv_encoder.h"
#include "qv/base/qv_encoder_private.h"
#include "qv/base/qv_store_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_abort.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_levels_private.h"

namespace
{
// The value of a Dict's next entry if its key is the address, else null. Moves past an entry that it returns. For a
// Dict whose keys are some of the store's addresses, with all of these in their order.
template< class T >
T *takeNext( qv::DictIterator &next, QV_STRING *address )
{
    if( !next )
        return nullptr;

    const QV___DICT_ITEM &item = *next;

    if( item.key != address && qvStringCompare( static_cast< QV_STRING * >( item.key ), address ) != 0 )
        return nullptr;

    ++next;

    return static_cast< T * >( item.val );
}
} // namespace

void qvStoreEncodeToEncoder( QV_STORE *store, QV_ENCODER *encoder )
{
    QV_CHECK( store );
    QV_CHECK( encoder );

    // The next entries of all three Dicts.
    struct Level
    {
        qv::DictIterator addresses, values, stores;
    };

    const auto begin = []( QV_STORE *of ) -> Level
    { return { { qv::addressesOf( of ), 0 }, { of->values, 0 }, { of->stores, 0 } }; };

    qv::Levels< Level > levels;
    Level               at = begin( store );
    qvEncoderEncodeInt( encoder, qvStoreLength( store ) );

    do
    {
        while( at.addresses )
        {
            QV_STRING *address = static_cast< QV_STRING * >( at.addresses->key );
            QV_STRING *value   = takeNext< QV_STRING >( at.values, address );
            QV_STORE  *sub     = takeNext< QV_STORE >( at.stores, address );
            ++at.addresses;

            qv::encodeEntry( encoder, address, value, sub != nullptr );

            if( sub )
            {
                levels.push( at );
                at = begin( sub );
                qvEncoderEncodeInt( encoder, qvStoreLength( sub ) );
            }
        }

        QV_ASSERT( !at.values && !at.stores );
    } while( levels.pop( &at ) );
}

QV_BUFFER *qvStoreEncodeToBuffer( QV_STORE *store )
{
    QV_CHECK( store );

    qv::Ref< QV_ENCODER > encoder( qvEncoderCreate() );
    qvStoreEncodeToEncoder( store, encoder );

    return qvEncoderBuffer( encoder );
}

QV_STORE *qv___StoreTryDecodeFromDecoder( QV_DECODER *decoder, QV_INT depth )
{
    QV_CHECK( decoder );
    QV_CHECK( depth >= 0 );

    qv::Ref< QV_STORE > store( qvStoreCreate() );
    QV_INT              count = 0;
    bool                ok    = depth < QV_STORE_MAX_DEPTH && qvDecoderTryDecodeInt( decoder, &count ) && count >= 0
              && count <= qvDecoderRemaining( decoder ); // each entry takes some bytes

    for( QV_INT i = 0; ok && i < count; i++ )
    {
        qv::Ref< QV_STRING > address, value;
        qv::Ref< QV_STORE >  sub;
        QV_BOOL              hasStore = QV_FALSE;

        ok = qvDecoderTryDecodeString( decoder, address.at() ) && qvStoreAddressOk( address )
             && qvDecoderTryDecodeOptionalString( decoder, value.at() ) && qvDecoderTryDecodeBool( decoder, &hasStore );

        if( ok && hasStore )
        {
            sub.reset( qv___StoreTryDecodeFromDecoder( decoder, depth + 1 ) );
            ok = sub.get() != nullptr;
        }

        if( ok && value )
            qv::setInStore( store, qv::STORE_VALUES, address, value );

        if( ok && sub )
            qv::setInStore( store, qv::STORE_STORES, address, sub );
    }

    if( ok )
        return store.give();

    qvDecoderSetError( decoder );
    return nullptr;
}

QV_STORE *qvStoreTryDecodeFromDecoder( QV_DECODER *decoder )
{
    QV_CHECK( decoder );

    qv::ObjBatch  strings( qvStringSort() );
    qv::ObjBatch *before = qv::setDecoderBatch( decoder, &strings );
    QV_STORE     *store  = qv___StoreTryDecodeFromDecoder( decoder, 0 );
    qv::setDecoderBatch( decoder, before );

    return store;
}

QV_STORE *qvStoreTryDecodeFromBuffer( QV_BUFFER *buffer )
{
    QV_CHECK( buffer );

    qv::Ref< QV_DECODER > decoder( qvDecoderCreate( buffer ) );
    qv::Ref< QV_STORE >   store( qvStoreTryDecodeFromDecoder( decoder ) );

    return store && qvDecoderRemaining( decoder ) == 0 ? store.give() : nullptr;
}
