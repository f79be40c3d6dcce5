// The platform's basic types and result codes, as the shell uses them.
#ifndef QUILLON_TOOLBOX_TYPES_H
#define QUILLON_TOOLBOX_TYPES_H

#include <cstdint>

namespace quillon {

using OSErr = std::int16_t;
using OSStatus = std::int32_t;
using OSType = std::uint32_t;

// The four-character code that CODE spells; the first character goes into the high byte.
constexpr OSType four(const char (&code)[5]) {
    return static_cast<OSType>(static_cast<unsigned char>(code[0])) << 24 |
           static_cast<OSType>(static_cast<unsigned char>(code[1])) << 16 |
           static_cast<OSType>(static_cast<unsigned char>(code[2])) << 8 |
           static_cast<OSType>(static_cast<unsigned char>(code[3]));
}

struct Point {
    std::int16_t v, h;
};

struct Rect {
    std::int16_t top, left, bottom, right;
};

struct ProcessSerialNumber {
    std::uint32_t highLongOfPSN, lowLongOfPSN;
};

enum : OSStatus {
    noErr = 0,
    nsvErr = -35,
    ioErr = -36,
    bdNamErr = -37,
    fnOpnErr = -38,
    eofErr = -39,
    fnfErr = -43,
    wPrErr = -44,
    paramErr = -50,
    dupFNErr = -48,
    permErr = -54,
    memFullErr = -108,
    dirNFErr = -120,
    procNotFound = -600,
    memFragErr = -601,
    connectionInvalid = -609,
    errAEDescNotFound = -1701,
    errAECoercionFail = -1700,
    errAEEventNotHandled = -1708,
    errAEWaitCanceled = -1711,
    errAETimeout = -1712,
};

} // namespace quillon

#endif
