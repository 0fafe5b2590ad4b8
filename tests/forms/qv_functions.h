/** @file
    All public functions as rows that can be called with any arguments, and arguments for them. functions.py writes the
    tables from the headers. */

#ifndef QV_FUNCTIONS_H
#define QV_FUNCTIONS_H

#include "qv_test_support.h"

#include "qv/qv.h"

#include <deque>
#include <memory>
#include <random>

namespace qv::test
{
/** An argument or a result. */
union Slot
{
    QV_INT  i = 0;
    QV_REAL r;
    void   *p;
};

struct Function
{
    const char *name;
    const char *words; // the type of the result, then for each parameter its type and its name, with bars between
    Slot ( *call )( Slot *arguments );
};

/** A form of a function, and for each parameter of the plain one how its argument is made, from which of the form's. */
struct Form
{
    const char *form;
    const char *plain;
    const char *words;
};

extern const Function FUNCTIONS[];
extern const size_t   FUNCTION_COUNT;
extern const Form     FORMS[];
extern const size_t   FORM_COUNT;

/** Calls a function with a list of the two arguments that all formats of the tests take. */
inline Slot withList( Slot ( *call )( Slot *, va_list * ), Slot *arguments, ... )
{
    va_list list;
    va_start( list, arguments );
    Slot result = call( arguments, &list );
    va_end( list );

    return result;
}

class Arguments;

struct Argument
{
    std::string                  type, name;
    Slot                         slot       = {};
    Ref< QV_OBJ >                object     = {};
    std::shared_ptr< Arguments > madeFrom   = {}; // what the object was created from
    std::u32string               characters = {}; // of a text, or what a format becomes
    std::string                  bytes      = {}; // of an array, and where results of up to 128 bytes go
    std::wstring                 wide       = {};
    QV_INT                       units      = -1; // of an array, which the next argument tells

    /** What a call may have changed, as text. */
    std::string shown() const;
};

/** Random arguments of a function that it accepts; the same for the same seed. Sequences and counts may be empty. */
class Arguments
{
public:
    Arguments( const Function &function, unsigned seed, bool nothingEmpty = false );

    std::vector< Slot > slots();

    std::deque< Argument > all; // of a variadic function with two more

private:
    void   add( const std::string &type, const std::string &name );
    QV_INT number( const std::string &type, const std::string &name );
    void   object( Argument &argument, const std::string &family );
    QV_INT below( QV_INT limit )
    {
        return static_cast< QV_INT >( random() % static_cast< unsigned long >( limit ) );
    }

    std::u32string someText( bool name = false );
    std::string    someBytes();

    const QV_INT least; // of units
    std::string  function;
    std::mt19937 random;
    QV_INT       room = 4; // what indexes and counts may reach: what is left of the last sequence
};

const Function *findFunction( const std::string &name );

/** True for an object and for the address of one, of any family. */
bool isObject( const std::string &type );

/** An object, which stays with the caller, as text; null too. */
std::string shownObject( QV_OBJ *object );
} // namespace qv::test

#endif
