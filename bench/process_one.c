int one( void );

int one( void )
{
    return 1;
}
