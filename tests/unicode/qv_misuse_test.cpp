#include "qv_test_support.h"

#include "qv/unicode/qv_unicode_cccv.h"
#include "qv/unicode/qv_unicode_cdmt.h"
#include "qv/unicode/qv_unicode_db_private.h"
#include "qv/unicode/qv_unicode_genc.h"
#include "qv/unicode/qv_unicode_normalizer.h"
#include "qv/unicode/qv_unicode_properties.h"
#include "qv/unicode/qv_unicode_script.h"

using namespace qv::test;

TEST( Misuse, IsReported )
{
    static QV_UNICODE_NORMALIZER *norm = qvUnicodeNormalizerCreate( 0 );
    static QV_STRING             *abc  = text( "abc" ).give();

    expectReports( {
        { [] { qvUnicodeGenc( 0x110000 ); }, "QV_CHAR_OK( ch )" },
        { [] { qvUnicodeIsOther( 0xFFFFFFFF ); }, "QV_CHAR_OK( ch )" },
        { [] { qv___UnicodeUpperCaseDbLookup( 0x110000, nullptr ); }, "QV_CHAR_OK( ch )" },
        { [] { qvUnicodeBaseNDigitValue( U'1', 37 ); }, "base >=2 && base <= 36" },
        { [] { qvUnicodeGencDescription( 30 ); }, "QV_UNICODE_GENC_OK( genc )" },
        { [] { qvUnicodeCccvSymName( 256 ); }, "QV_UNICODE_CCCV_OK( cccv )" },
        { [] { qvUnicodeCdmtTag( 18 ); }, "QV_UNICODE_CDMT_OK( cdmt )" },
        { [] { qvUnicodeScriptName( -1 ); }, "QV_UNICODE_SCRIPT_OK( script )" },
        { [] { qvUnicodeNormalizerCreate( 4 ); }, "QV_UNICODE_NORMAL_FORM_OK( normalForm )" },
        { [] { qvUnicodeNormalizerWriteChars( norm, nullptr, 1 ); }, "chs || chsLength == 0" },
        { [] { qvUnicodeNormalizerWriteTrailing( norm, abc, 4 ); }, "offset >= 0" },
        { [] { qvUnicodeNormalizerWriteLeading( norm, abc, 4 ); }, "offset + count <= qvStringLength( src )" },
        { [] { qvUnicodeNormalizerRead( norm, &abc, -2 ); }, "maxLen == -1 || maxLen >= 0" },
    } );

    qvUnicodeNormalizerRelease( norm );
    qvStringRelease( abc );
}
