#include "qv/unicode/qv_unicode_script.h"

#include "qv/unicode/qv_unicode_names_private.h"
#include "qv/unicode/qv_unicode_properties.h"

namespace
{
struct Row
{
    char name[23];
};

// In the order of the values. In capitals they are the names of the constants, after the prefix.
const Row ROWS[] = {
    { "Unknown" },
    { "Common" },
    { "Latin" },
    { "Greek" },
    { "Cyrillic" },
    { "Armenian" },
    { "Hebrew" },
    { "Arabic" },
    { "Syriac" },
    { "Thaana" },
    { "Devanagari" },
    { "Bengali" },
    { "Gurmukhi" },
    { "Gujarati" },
    { "Oriya" },
    { "Tamil" },
    { "Telugu" },
    { "Kannada" },
    { "Malayalam" },
    { "Sinhala" },
    { "Thai" },
    { "Lao" },
    { "Tibetan" },
    { "Myanmar" },
    { "Georgian" },
    { "Hangul" },
    { "Ethiopic" },
    { "Cherokee" },
    { "Canadian_Aboriginal" },
    { "Ogham" },
    { "Runic" },
    { "Khmer" },
    { "Mongolian" },
    { "Hiragana" },
    { "Katakana" },
    { "Bopomofo" },
    { "Han" },
    { "Yi" },
    { "Old_Italic" },
    { "Gothic" },
    { "Deseret" },
    { "Inherited" },
    { "Tagalog" },
    { "Hanunoo" },
    { "Buhid" },
    { "Tagbanwa" },
    { "Limbu" },
    { "Tai_Le" },
    { "Linear_B" },
    { "Ugaritic" },
    { "Shavian" },
    { "Osmanya" },
    { "Cypriot" },
    { "Braille" },
    { "Buginese" },
    { "Coptic" },
    { "New_Tai_Lue" },
    { "Glagolitic" },
    { "Tifinagh" },
    { "Syloti_Nagri" },
    { "Old_Persian" },
    { "Kharoshthi" },
    { "Balinese" },
    { "Cuneiform" },
    { "Phoenician" },
    { "Phags_Pa" },
    { "Nko" },
    { "Sundanese" },
    { "Lepcha" },
    { "Ol_Chiki" },
    { "Vai" },
    { "Saurashtra" },
    { "Kayah_Li" },
    { "Rejang" },
    { "Lycian" },
    { "Carian" },
    { "Lydian" },
    { "Cham" },
    { "Tai_Tham" },
    { "Tai_Viet" },
    { "Avestan" },
    { "Egyptian_Hieroglyphs" },
    { "Samaritan" },
    { "Lisu" },
    { "Bamum" },
    { "Javanese" },
    { "Meetei_Mayek" },
    { "Imperial_Aramaic" },
    { "Old_South_Arabian" },
    { "Inscriptional_Parthian" },
    { "Inscriptional_Pahlavi" },
    { "Old_Turkic" },
    { "Kaithi" },
};
} // namespace

QV_STRING *qvUnicodeScriptName( QV_INT script )
{
    QV_CHECK( QV_UNICODE_SCRIPT_OK( script ) );
    return qv::unicode::createName( ROWS[script].name );
}

QV_STRING *qvUnicodeScriptSymName( QV_INT script )
{
    QV_CHECK( QV_UNICODE_SCRIPT_OK( script ) );
    return qv::unicode::createSymName( "QV_UNICODE_SCRIPT_", ROWS[script].name );
}

QV_INT qvUnicodeScriptFromName( QV_STRING *name )
{
    QV_CHECK( name );
    return qv::unicode::findName( ROWS, &Row::name, name, false );
}

QV_INT qvUnicodeScriptFromNameCaseFold( QV_STRING *name )
{
    QV_CHECK( name );
    return qv::unicode::findNameCaseFold( ROWS, &Row::name, name );
}
