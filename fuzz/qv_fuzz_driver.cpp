// Runs a fuzz target without libFuzzer: a fixed number of inputs from a fixed seed, made of pieces that the readers know.

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>

extern "C" int LLVMFuzzerInitialize( int *argc, char ***argv ) __attribute__( ( weak ) );
extern "C" int LLVMFuzzerTestOneInput( const uint8_t *data, size_t size );

// No threads meet in a target, and ThreadSanitizer makes all slow.
#ifdef __SANITIZE_THREAD__
const int ROUNDS = 1000;
#else
const int ROUNDS = 20000;
#endif

int main( int argc, char **argv )
{
    if( LLVMFuzzerInitialize )
        LLVMFuzzerInitialize( &argc, &argv );

    static const std::string PIECES[] = {
        "a=1\n", "a.b=", "a.", ".", "=", "%", "%%", "%00000a", "%110000", "\r\n", "\xc2\x85", "\xe2\x80\xa8", "\xef\xbb\xbf",
        "\xf0\x9f\x98\x80", "\xc0\x80", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\x7f\x7f\x7f", "\x88\x80", "\x01\x01\x01\x01\x61",
        std::string( "\x00\x01\x00", 3 ), std::string( "\xff\xfe\x00\xd8", 4 ), "0x7f", "-9223372036854775808", "TRUE", "1,5" };

    std::mt19937 random( 20240917 );

    for( int round = 0; round < ROUNDS; round++ )
    {
        std::string input;

        for( unsigned i = random() % 40; i > 0; i-- )
        {
            if( random() % 4 )
                input += PIECES[random() % std::size( PIECES )];
            else
                input += static_cast< char >( random() );
        }

        if( random() % 3 == 0 && !input.empty() )
            input[random() % input.size()] ^= static_cast< char >( 1 << random() % 8 );

        LLVMFuzzerTestOneInput( reinterpret_cast< const uint8_t * >( input.data() ), input.size() );
    }
}
