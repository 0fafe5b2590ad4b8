// The binary form.

#include "qv/base/qv_store.h"

#include "qv/base/qv_decoder.h"
#include "qv/base/qv_dict.h"
#include "qv/base/qv_dict_private.h"
#include "qv/base/qv_encoder.h"
#include "qv/base/qv_encoder_private.h"
#include "qv/base/qv_error.h"
#include "qv/base/qv_error_private.h"
#include "qv/base/qv_store_private.h"
#include "qv/base/qv_store_texts_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_abort.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_int.h"
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

    qv::EntryWriter writer( encoder );

    // Of a store with values only they are all written here.
    const auto begin = [&]( QV_STORE *of ) -> Level
    {
        writer.writeInt( qvStoreLength( of ) );

        if( of->stores->length > 0 )
            return { { qv::addressesOf( of ), 0 }, { of->values, 0 }, { of->stores, 0 } };

        writer.writeValues( of->values );
        return {};
    };

    qv::Levels< Level > levels;
    Level               at = begin( store );

    do
    {
        while( at.addresses )
        {
            QV_STRING *address = static_cast< QV_STRING * >( at.addresses->key );
            QV_STRING *value   = takeNext< QV_STRING >( at.values, address );
            QV_STORE  *sub     = takeNext< QV_STORE >( at.stores, address );
            ++at.addresses;

            writer.writeEntry( address, value, sub != nullptr );

            if( sub )
            {
                levels.push( at );
                at = begin( sub );
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

namespace
{
// Reads a tree. Values are appended and put in order when their store is read.
class Reader
{
public:
    explicit Reader( QV_DECODER *decoder ) : decoder_( decoder ), before_( qv::setDecoderBatch( decoder, &strings_ ) )
    {
    }

    ~Reader()
    {
        qv::setDecoderBatch( decoder_, before_ );
    }

    Reader( const Reader & )            = delete;
    Reader &operator=( const Reader & ) = delete;

    // A store that lies `depth` sub-stores deep, or null with the last error set.
    QV_STORE *readOrTell( QV_INT depth )
    {
        QV_STORE *store = read( depth );

        if( !store )
            qv::setError(
                { .code   = isTooDeep_ ? QV_ERROR_TOO_DEEP : QV_ERROR_BAD_DOCUMENT,
                  .offset = qv::decoderOffset( decoder_ ),
                  .reason = isTooDeep_ ? "nested too deep" : "truncated, or no document in binary form" } );

        return store;
    }

private:
    // A store that lies `depth` sub-stores deep, or null.
    QV_STORE *read( QV_INT depth )
    {
        qv::Ref< QV_STORE > store( qv::createStoreIn( &newStores_ ) );
        QV_INT              count = 0;
        isTooDeep_                = depth >= QV_STORE_MAX_DEPTH;
        bool ok                   = !isTooDeep_ && qvDecoderTryDecodeInt( decoder_, &count ) && count >= 0
                  && count <= qvDecoderRemaining( decoder_ ); // each entry takes some bytes

        for( QV_INT i = 0; ok && i < count; i++ )
            ok = readEntry( store, depth, count );

        if( store->values != qv___DictEmpty )
            qv::orderDict( store->values );

        qv::makeAddresses( store );

        return ok ? store.give() : nullptr;
    }

    struct Entry
    {
        qv::Ref< QV_STRING > address, value; // the value may be null
        bool                 hasStore;
    };

    bool readEntry( QV_STORE *store, QV_INT depth, QV_INT count )
    {
        Entry entry;

        if( !readPlain( entry ) && !readAny( entry ) )
            return false;

        qv::Ref< QV_STORE > sub( entry.hasStore ? read( depth + 1 ) : nullptr );

        if( entry.hasStore && !sub )
            return false;

        if( sub )
        {
            QV_INT before = store->stores->length;
            qvDictSetObjKey( &store->stores, qv::obj( entry.address.get() ), qv::obj( sub.get() ) );

            if( store->stores->length == before )
                forget(); // one before has been given up
        }

        if( entry.value )
        {
            if( store->values == qv___DictEmpty )
                qv::assign( &store->values, qv::createDictWithRoom( qvIntMin( count, 1024 ), &newTables_ ) );

            if( qv::appendToDict( store->values, entry.address.give(), entry.value.give() ) )
                forget();
        }
        else if( !sub )
        {
            forget(); // of an entry with nothing in it the address goes
        }

        return true;
    }

    // Reads an entry up to its store if its texts are ASCII, of 255 characters at most; else false, and nothing is read.
    bool readPlain( Entry &entry )
    {
        qv::DecoderRest     rest    = qv::restOf( decoder_ );
        const uint8_t      *pos     = rest.begin;
        qv::Span< uint8_t > address = {}, value = {};

        if( !takeText( pos, rest.end, &address ) || address.length() == 0
            || qv::wordLength( address.begin, address.length() ) < address.length() || pos == rest.end || *pos > 1 )
            return false;

        bool hasValue = *pos++;

        if( hasValue && ( !takeText( pos, rest.end, &value ) || !qv::areAscii( value.begin, value.length() ) ) )
            return false;

        if( pos == rest.end || *pos > 1 )
            return false;

        entry.hasStore = *pos++;
        qv::moveDecoder( decoder_, pos );
        entry.address.reset( addressTexts_.take( address ) );

        if( hasValue )
            entry.value.reset( valueTexts_.take( value ) );

        return true;
    }

    // Takes a text with a length of one digit at most.
    static bool takeText( const uint8_t *&pos, const uint8_t *end, qv::Span< uint8_t > *text )
    {
        if( end - pos < 2 || *pos > 1 )
            return false;

        QV_INT length = *pos == 0 ? 0 : pos[1];
        pos += 1 + *pos;

        if( end - pos < length )
            return false;

        *text = { pos, pos + length };
        pos += length;

        return true;
    }

    bool readAny( Entry &entry )
    {
        QV_BOOL hasStore = QV_FALSE;
        bool    ok       = qvDecoderTryDecodeString( decoder_, entry.address.at() ) && qvStoreAddressOk( entry.address )
                  && qvDecoderTryDecodeOptionalString( decoder_, entry.value.at() )
                  && qvDecoderTryDecodeBool( decoder_, &hasStore );

        entry.hasStore = hasStore;

        return ok;
    }

    void forget()
    {
        addressTexts_.forget();
        valueTexts_.forget();
    }

    QV_DECODER   *decoder_;
    bool          isTooDeep_ = false; // the store that was begun last
    qv::ObjBatch  strings_{ qvStringSort() };
    qv::ObjBatch *before_;
    qv::ObjBatch  newStores_{ qvStoreSort() };
    qv::ObjBatch  newTables_{ qvDictSort() };
    qv::Texts     addressTexts_;
    qv::Texts     valueTexts_;
};
} // namespace

QV_STORE *qv___StoreTryDecodeFromDecoder( QV_DECODER *decoder, QV_INT depth )
{
    QV_CHECK( decoder );
    QV_CHECK( depth >= 0 );

    QV_STORE *store = Reader( decoder ).readOrTell( depth );

    if( !store )
        qvDecoderSetError( decoder );

    return store;
}

QV_STORE *qvStoreTryDecodeFromDecoder( QV_DECODER *decoder )
{
    QV_CHECK( decoder );
    return qv___StoreTryDecodeFromDecoder( decoder, 0 );
}

QV_STORE *qvStoreTryDecodeFromBuffer( QV_BUFFER *buffer )
{
    QV_CHECK( buffer );

    qv::Ref< QV_DECODER > decoder( qvDecoderCreate( buffer ) );
    qv::Ref< QV_STORE >   store( qvStoreTryDecodeFromDecoder( decoder ) );

    if( !store || qvDecoderRemaining( decoder ) == 0 )
        return store.give();

    qv::setError(
        { .code   = QV_ERROR_BAD_DOCUMENT,
          .offset = qv::decoderOffset( decoder ),
          .reason = "bytes behind the end of the document" } );
    return nullptr;
}
