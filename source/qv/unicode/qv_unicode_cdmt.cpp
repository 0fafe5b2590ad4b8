#include "qv/unicode/qv_unicode_cdmt.h"

#include "qv/unicode/qv_unicode_names_private.h"

namespace
{
struct Row
{
    char tag[11]; // empty if there is none
    char descr[47];
    char symName[10]; // after the prefix
};

// In the order of the values.
const Row ROWS[] = {
    { "", "No decomposition.", "NONE" },
    { "", "Canonical decomposition.", "CANONICAL" },
    { "<font>", "A font variant (e.g. a blackletter form).", "FONT" },
    { "<noBreak>", "A no-break version of a space of hyphen.", "NOBREAK" },
    { "<initial>", "An initial presentation form (Arabic).", "INITIAL" },
    { "<medial>", "A medial presentation form (Arabic).", "MEDIAL" },
    { "<final>", "A final presentation form (Arabic).", "FINAL" },
    { "<isolated>", "An isolated presentation form (Arabic).", "ISOLATED" },
    { "<circle>", "An encircled form.", "CIRCLE" },
    { "<super>", "A superscript form.", "SUPER" },
    { "<sub>", "A subscript form.", "SUB" },
    { "<vertical>", "A vertical layout presentation form.", "VERTICAL" },
    { "<wide>", "A wide (or zenkaku) compatibility character.", "WIDE" },
    { "<narrow>", "A narrow (or hankaku) compatibility character.", "NARROW" },
    { "<small>", "A small variant form (CNS compatibility).", "SMALL" },
    { "<square>", "A CJK squared font variant.", "SQUARE" },
    { "<fraction>", "A vulgar fraction form.", "FRACTION" },
    { "<compat>", "Otherwise unspecified compatibility character.", "COMPAT" },
};
} // namespace

QV_STRING *qvUnicodeCdmtTag( QV_INT cdmt )
{
    QV_CHECK( QV_UNICODE_CDMT_OK( cdmt ) );

    const char *tag = ROWS[cdmt].tag;

    return *tag ? qv::unicode::createName( tag ) : nullptr;
}

QV_STRING *qvUnicodeCdmtDescription( QV_INT cdmt )
{
    QV_CHECK( QV_UNICODE_CDMT_OK( cdmt ) );
    return qv::unicode::createName( ROWS[cdmt].descr );
}

QV_STRING *qvUnicodeCdmtSymName( QV_INT cdmt )
{
    QV_CHECK( QV_UNICODE_CDMT_OK( cdmt ) );
    return qv::unicode::createSymName( "QV_UNICODE_CDMT_", ROWS[cdmt].symName );
}

QV_INT qvUnicodeCdmtFromTag( QV_STRING *tag )
{
    QV_CHECK( tag );
    return qv::unicode::findName( ROWS, &Row::tag, tag, false );
}

QV_INT qvUnicodeCdmtFromTagCaseFold( QV_STRING *tag )
{
    QV_CHECK( tag );
    return qv::unicode::findNameCaseFold( ROWS, &Row::tag, tag );
}
