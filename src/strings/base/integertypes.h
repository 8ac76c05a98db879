#pragma once

/// The integer types, for functions of which there is one for each: M is a macro that takes the type. With a list
/// for all of them no type is forgotten.
#define TARN_FOR_EACH_PROMOTED_INTEGER(M) \
    M(int)                                \
    M(unsigned int)                       \
    M(long)                               \
    M(unsigned long)                      \
    M(long long)                          \
    M(unsigned long long)

/// The same and the short ones.
#define TARN_FOR_EACH_INTEGER(M) \
    M(short)                     \
    M(unsigned short)            \
    TARN_FOR_EACH_PROMOTED_INTEGER(M)

/// The same and those of one byte; plain char is a character.
#define TARN_FOR_EACH_INTEGER_OR_BYTE(M) \
    M(signed char)                       \
    M(unsigned char)                     \
    TARN_FOR_EACH_INTEGER(M)
