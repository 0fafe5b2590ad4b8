#include "bench.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <random>

// The texts and keys that all cases share.

namespace bench
{
namespace
{
// Words of each kind; texts are made of them in random order. The Vietnamese ones are decomposed, and those of the last
// kind have characters beyond the first plane.
struct Vocabulary
{
    const char                   *name;
    std::vector< std::u32string > words;
};

const std::vector< Vocabulary > VOCABULARIES = {
    { "English",
      { U"the", U"server", U"reads", U"every", U"document", U"Before", U"it", U"answers", U"and", U"nothing", U"is",
        U"Lost", U"when", U"a", U"disk", U"fills", U"up", U"quickly" } },
    { "German/French",
      { U"größer", U"Straße", U"été", U"où", U"Übung", U"garçon", U"müssen", U"déjà", U"schön", U"naïve", U"Maß",
        U"façade", U"für", U"élève", U"Zürich", U"brûlé" } },
    { "Cyrillic/Greek",
      { U"сервер", U"Документ", U"память", U"файл", U"λόγος", U"Αθήνα", U"γραφή", U"строка", U"ключ", U"δέντρο",
        U"значение", U"πίνακας" } },
    { "Chinese", { U"服务器", U"读取", U"文件", U"之前", U"内存", U"字符串", U"数据", U"系统", U"值", U"没有丢失" } },
    { "Vietnamese",
      { U"tie\u0302\u0301ng", U"Vie\u0323\u0302t", U"ca\u0301ch", U"du\u031B\u0303", U"lie\u0323\u0302u",
        U"cho\u0302\u0303", U"no\u0301i", U"ma\u0301y", U"chu\u0309" } },
    { "Hangul", { U"서버", U"문서", U"읽기", U"메모리", U"문자열", U"값", U"없음", U"디스크", U"시스템" } },
    { "mixed",
      { U"port", U"größe", U"файл", U"服务", U"문서", U"a=1", U"λόγος", U"100%", U"naïve", U"ti\u0301nh", U"OK" } },
    { "symbols", { U"😀👍", U"ok", U"🚀🚀🚀", U"𝒜𝒷𝒸", U"done", U"𝟙𝟚", U"🎉", U"yes", U"🗎📁" } } };

Language makeLanguage( const Vocabulary &vocabulary )
{
    Language     language;
    std::mt19937 random( 1 );
    language.name = vocabulary.name;

    auto grow = [&]( std::u32string &text ) { text += vocabulary.words[random() % vocabulary.words.size()] + U' '; };

    while( language.utf8.size() < 32 * 1024 )
    {
        std::u32string piece;
        grow( piece );
        language.text += piece;
        language.utf8 += toUtf8( piece );
    }

    language.utf16 = toUtf16( language.text );

    for( int i = 0; i < 256; i++ )
    {
        std::u32string text;

        while( text.size() < 24 )
            grow( text );

        text.resize( 24 );
        language.strings.push_back( text );
        language.utf8Strings.push_back( toUtf8( text ) );
        language.utf16Strings.push_back( toUtf16( text ) );
    }

    return language;
}
} // namespace

bool Language::isEnglish() const
{
    return std::strcmp( name, "English" ) == 0;
}

std::string toUtf8( std::u32string_view text )
{
    std::string utf8;

    for( char32_t ch : text )
    {
        const int more = ch < 0x80 ? 0 : ch < 0x800 ? 1 : ch < 0x10000 ? 2 : 3;
        utf8 += static_cast< char >( more == 0 ? ch : ( ~( 0xFFu >> ( more + 1 ) ) & 0xFF ) | ch >> 6 * more );

        for( int i = more - 1; i >= 0; i-- )
            utf8 += static_cast< char >( 0x80 | ( ch >> 6 * i & 0x3F ) );
    }

    return utf8;
}

std::string toUtf8( std::u16string_view text )
{
    std::u32string chars;

    for( char16_t unit : text )
        if( ( unit & 0xFC00 ) == 0xDC00 )
            chars.back() = 0x10000 + ( ( chars.back() & 0x3FF ) << 10 | ( unit & 0x3FF ) );
        else
            chars += unit;

    return toUtf8( chars );
}

std::u16string toUtf16( std::u32string_view text )
{
    std::u16string utf16;

    for( char32_t ch : text )
        if( ch < 0x10000 )
            utf16 += static_cast< char16_t >( ch );
        else
            utf16 += {
                static_cast< char16_t >( 0xD7C0 + ( ch >> 10 ) ), static_cast< char16_t >( 0xDC00 | ( ch & 0x3FF ) ) };

    return utf16;
}

const std::vector< Language > &languages()
{
    static const std::vector< Language > all = []
    {
        std::vector< Language > result;

        for( const Vocabulary &vocabulary : VOCABULARIES )
            result.push_back( makeLanguage( vocabulary ) );

        return result;
    }();

    return all;
}

std::vector< std::string > keys( size_t count )
{
    std::vector< std::string > result;
    std::mt19937               random( 2 );

    for( size_t i = 0; i < count; i++ )
    {
        char key[32];
        std::snprintf(
            key, sizeof( key ), "key%05x%08x", static_cast< unsigned >( i ), static_cast< unsigned >( random() ) );
        result.emplace_back( key );
    }

    std::shuffle( result.begin(), result.end(), random );
    return result;
}
} // namespace bench
