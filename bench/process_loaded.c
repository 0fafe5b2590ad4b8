int one( void );

int main( void )
{
    return one() - 1;
}
