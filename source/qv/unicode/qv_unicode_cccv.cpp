#include "qv/unicode/qv_unicode_cccv.h"

#include "qv/unicode/qv_unicode_names_private.h"
#include "qv/unicode/qv_unicode_properties.h"

namespace
{
struct Row
{
    uint8_t cccv;
    char    descr[60];
    char    symName[21]; // after the prefix
};

// The classes with a name.
const Row ROWS[] = {
    { 0, "Spacing, split, enclosing, reordrant, and Tibetan subjoined", "SPACING" },
    { 1, "Overlays and interior", "OVERLAYS" },
    { 7, "Nuktas", "NUKTAS" },
    { 8, "Hiragana/Katakana voicing marks", "HIRAGANA" },
    { 9, "Viramas", "VIRAMAS" },
    { 10, "Start of fixed position classes", "FIXED_POS_START" },
    { 199, "End of fixed position classes", "FIXED_POS_END" },
    { 200, "Below left attached", "BELOW_LEFT_ATTACHED" },
    { 202, "Below attached", "BELOW_ATTACHED" },
    { 204, "Below right attached", "BELOW_RIGHT_ATTACHED" },
    { 208, "Left attached (reordrant around single base character)", "LEFT_ATTACHED" },
    { 210, "Right attached", "RIGHT_ATTACHED" },
    { 212, "Above left attached", "ABOVE_LEFT_ATTACHED" },
    { 214, "Above attached", "ABOVE_ATTACHED" },
    { 216, "Above right attached", "ABOVE_RIGHT_ATTACHED" },
    { 218, "Below left", "BELOW_LEFT" },
    { 220, "Below", "BELOW" },
    { 222, "Below right", "BELOW_RIGHT" },
    { 224, "Left (reordrant around single base character)", "LEFT" },
    { 226, "Right", "RIGHT" },
    { 228, "Above left", "ABOVE_LEFT" },
    { 230, "Above", "ABOVE" },
    { 232, "Above right", "ABOVE_RIGHT" },
    { 233, "Double below", "DOUBLE_BELOW" },
    { 234, "Double above", "DOUBLE_ABOVE" },
    { 240, "Below (iota subscript)", "BELOW_IOTA" },
};

const Row *findClass( QV_INT cccv )
{
    for( const Row &row : ROWS )
        if( row.cccv == cccv )
            return &row;

    return nullptr;
}
} // namespace

QV_STRING *qvUnicodeCccvDescription( QV_INT cccv )
{
    QV_CHECK( QV_UNICODE_CCCV_OK( cccv ) );

    if( const Row *row = findClass( cccv ) )
        return qv::unicode::createName( row->descr );

    return qvStringCreateFromFormatCstr( "Canonical Combining Class Value %i", -1, cccv );
}

QV_STRING *qvUnicodeCccvSymName( QV_INT cccv )
{
    QV_CHECK( QV_UNICODE_CCCV_OK( cccv ) );

    const Row *row = findClass( cccv );

    return row ? qv::unicode::createSymName( "QV_UNICODE_CCCV_", row->symName ) : nullptr;
}
