/* Random streams: generators, their registry, streams with the data attached to them, persistence.
 *
 * The C door checks what the functions below say, and nothing else. Functions return 0 (VTS_STATUS_OK) or a
 * negative status unless said otherwise. A stream is used by one thread at a time; distinct streams run
 * freely side by side. Registration is finished before concurrent use. <tmk/random.hpp> is the checked C++
 * door. */
#ifndef TMK_ABI_VTS_H
#define TMK_ABI_VTS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#ifdef __GNUC__
#pragma GCC visibility push(default)
#endif

enum {
  VTS_STATUS_OK = 0,
  VTS_STATUS_BAD_METHOD = -2,
  VTS_STATUS_BAD_ARGUMENT = -3,
  VTS_STATUS_NO_MEMORY = -4,
  VTS_STATUS_NULL_CALLBACK = -5,
  VTS_STATUS_INVALID_BRNG = -1000,
  VTS_STATUS_NO_LEAPFROG = -1002,
  VTS_STATUS_NO_SKIPAHEAD = -1003,
  VTS_STATUS_BAD_STATE_SIZE = -1008,
  VTS_STATUS_BAD_WORD_SIZE = -1009,
  VTS_STATUS_BAD_SEED_COUNT = -1010,
  VTS_STATUS_BAD_BIT_COUNT = -1011,
  VTS_STATUS_BAD_NSTREAMS = -1013,
  VTS_STATUS_NO_FIXED_WIDTH_BITS = -1014,
  VTS_STATUS_FILE_CLOSE = -1100,
  VTS_STATUS_FILE_OPEN = -1101,
  VTS_STATUS_FILE_WRITE = -1102,
  VTS_STATUS_FILE_READ = -1103,
  VTS_STATUS_BAD_IMAGE = -1110,
  VTS_STATUS_BAD_IMAGE_VERSION = -1111,
  VTS_STATUS_NO_RDRAND = -1130,
  VTS_STATUS_NO_AES = -1140,
  VTS_STATUS_RO_ENTRY_NOT_FOUND = -3000,
  VTS_STATUS_RO_TABLE_FULL = -3001
};

/* Generator identifiers: a row of __RegBrngsNew as (row + 1) << 20, plus the number of a parameter set. */
enum {
  VTS_BRNG_MCG31M1 = 0x100000,
  VTS_BRNG_R250 = 0x200000,
  VTS_BRNG_MRG32K3A = 0x300000,
  VTS_BRNG_MCG59 = 0x400000,
  VTS_BRNG_WH = 0x500000, /* + 0 to 272 */
  VTS_BRNG_SOBOL = 0x600000,
  VTS_BRNG_NIEDERR = 0x700000,
  VTS_BRNG_MT19937 = 0x800000,
  VTS_BRNG_MT2203 = 0x900000, /* + 0 to 6023 */
  VTS_BRNG_IABSTRACT = 0xA00000,
  VTS_BRNG_DABSTRACT = 0xB00000,
  VTS_BRNG_SABSTRACT = 0xC00000,
  VTS_BRNG_SFMT19937 = 0xD00000,
  VTS_BRNG_NONDETERM = 0xE00000,
  VTS_BRNG_ARS5 = 0xF00000,
  VTS_BRNG_PHILOX4X32X10 = 0x1000000
};

/* What initStream is asked for. */
enum {
  VTS_INIT_SEED = 0,     /* n seed words at params */
  VTS_INIT_LEAPFROG = 1, /* n streams; params points to the 32-bit index of this one */
  VTS_INIT_SKIPAHEAD = 2 /* n is 2; params points to the 64-bit count of elements to skip */
};

typedef struct VtsStream* VtsStreamHandle;

typedef int32_t (*VtsInitStream)(int32_t method, VtsStreamHandle stream, int32_t n, const uint32_t* params);
typedef int32_t (*VtsSBrng)(VtsStreamHandle stream, int32_t n, float* r, float a, float b);
typedef int32_t (*VtsDBrng)(VtsStreamHandle stream, int32_t n, double* r, double a, double b);
typedef int32_t (*VtsIBrng)(VtsStreamHandle stream, int32_t n, void* r);

/* One generator of the registry. */
typedef struct {
  int32_t stateBytes;    /* size of the stream block with its 16-byte header */
  int32_t seedWords;     /* count of state words, the unit of __vtsCopyStreamState */
  int32_t mayOutputZero; /* 1 where the integer sequence can hold zero */
  int32_t wordBytes;     /* bytes of one element of integer output: 4, 8 or 16 */
  int32_t bitsPerWord;   /* random bits of one element of integer output */
  VtsInitStream initStream;
  VtsSBrng sBrng; /* n >= 1 singles over the interval from a to b */
  VtsDBrng dBrng; /* n >= 1 doubles likewise */
  VtsIBrng iBrng; /* n >= 1 elements of wordBytes each */
} VtsBrngProperties;

#ifdef __GNUC__
#pragma GCC visibility pop
#endif
#ifdef __cplusplus
}
#endif
#endif
