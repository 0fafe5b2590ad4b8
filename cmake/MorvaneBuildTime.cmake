# Writes a header with the time of the build, OUTPUT. SOURCE_DATE_EPOCH, where set, makes it reproducible.
string( TIMESTAMP time "UTC %Y-%m-%d %H:%M:%S (%A)" UTC )
file( WRITE "${OUTPUT}" "#define QV___BUILD_TIME \"${time}\"\n" )
