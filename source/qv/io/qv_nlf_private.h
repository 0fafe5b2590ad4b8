#ifndef QV_NLF_PRIVATE_H
#define QV_NLF_PRIVATE_H

#include "qv/io/qv_nlf.h"
#include "qv/runtime/qv_family.h"

#ifdef __cplusplus
namespace qv
{
/** The terminator of a newline flag: one or two characters. */
struct NlfTerminator
{
    QV_INT  flag;
    QV_INT  length;
    QV_CHAR chars[2];
};

/** All of them, in the order of the flags' values. */
constexpr NlfTerminator NLF_TERMINATORS[] = {
    { QV_NLF_FLAG_LF, 1, { U'\n' } },          { QV_NLF_FLAG_CR, 1, { U'\r' } },
    { QV_NLF_FLAG_CRLF, 2, { U'\r', U'\n' } }, { QV_NLF_FLAG_NEL, 1, { U'\x85' } },
    { QV_NLF_FLAG_VT, 1, { U'\v' } },          { QV_NLF_FLAG_FF, 1, { U'\f' } },
    { QV_NLF_FLAG_LS, 1, { U'\u2028' } },      { QV_NLF_FLAG_PS, 1, { U'\u2029' } },
};
} // namespace qv
#endif

#endif
