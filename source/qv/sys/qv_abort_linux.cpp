#include "qv/sys/qv_abort_private.h"

namespace
{
struct SignalText
{
    int         signal;
    const char *text;
};

struct CodeText
{
    int         signal; // 0 for every signal
    int         code;
    const char *text;
};

const SignalText SIGNAL_TEXTS[] = {
    { SIGILL, " (SIGILL, illegal instruction)" },        { SIGABRT, " (SIGABRT, abort signal)" },
    { SIGBUS, " (SIGBUS, bad memory access)" },          { SIGFPE, " (SIGFPE, floating-point exception)" },
    { SIGSEGV, " (SIGSEGV, invalid memory reference)" },
};

// The kernel's numbers, since the headers of the C library do not define all of them everywhere.
const CodeText CODE_TEXTS[] = {
    { 0, 0, " (SI_USER, kill, sigsend, raise)" },
    { 0, 128, " (SI_KERNEL, kernel from somewhere)" },
    { 0, -1, " (SI_QUEUE, sigqueue)" },
    { 0, -2, " (SI_TIMER, timer expiration)" },
    { 0, -3, " (SI_MESGQ, real time mesq state change)" },
    { 0, -4, " (SI_ASYNCIO, AIO completion)" },
    { 0, -5, " (SI_SIGIO, queued SIGIO)" },
    { 0, -6, " (SI_TKILL, tkill system call)" },
    { SIGILL, 1, " (ILL_ILLOPC, illegal opcode)" },
    { SIGILL, 2, " (ILL_ILLOPN, illegal operand)" },
    { SIGILL, 3, " (ILL_ILLADR, illegal addressing mode)" },
    { SIGILL, 4, " (ILL_ILLTRP, illegal trap)" },
    { SIGILL, 5, " (ILL_PRVOPC, privileged opcode)" },
    { SIGILL, 6, " (ILL_PRVREG, privileged register)" },
    { SIGILL, 7, " (ILL_COPROC, coprocessor error)" },
    { SIGILL, 8, " (ILL_BADSTK, internal stack error)" },
    { SIGFPE, 1, " (FPE_INTDIV, integer divide by zero)" },
    { SIGFPE, 2, " (FPE_INTOVF, integer overflow)" },
    { SIGFPE, 3, " (FPE_FLTDIV, floating point divide by zero)" },
    { SIGFPE, 4, " (FPE_FLTOVF, floating point overflow)" },
    { SIGFPE, 5, " (FPE_FLTUND, floating point underflow)" },
    { SIGFPE, 6, " (FPE_FLTRES, floating point inexact result)" },
    { SIGFPE, 7, " (FPE_FLTINV, floating point invalid operation)" },
    { SIGFPE, 8, " (FPE_FLTSUB, subscript out of range)" },
    { SIGSEGV, 1, " (SEGV_MAPERR, address not mapped to object)" },
    { SIGSEGV, 2, " (SEGV_ACCERR, invalid permissions for mapped object)" },
    { SIGSEGV, 3, " (SEGV_BNDERR, failed address bound checks)" },
    { SIGSEGV, 4, " (SEGV_PKUERR, failed protection key checks)" },
    { SIGBUS, 1, " (BUS_ADRALN, invalid address alignment)" },
    { SIGBUS, 2, " (BUS_ADRERR, non-existent physical address)" },
    { SIGBUS, 3, " (BUS_OBJERR, object specific hardware error)" },
    { SIGBUS, 4, " (BUS_MCEERR_AR, hardware memory error consumed on a machine check: action required)" },
    { SIGBUS, 5, " (BUS_MCEERR_AO, hardware memory error detected in process but not consumed: action optional)" },
};
} // namespace

const char *qv::signalText( int signal )
{
    for( const SignalText &row : SIGNAL_TEXTS )
        if( row.signal == signal )
            return row.text;

    return "";
}

const char *qv::signalCodeText( int signal, int code )
{
    for( const CodeText &row : CODE_TEXTS )
        if( row.code == code && ( row.signal == signal || row.signal == 0 ) )
            return row.text;

    return "";
}
