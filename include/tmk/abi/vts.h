/* SPDX-License-Identifier: Apache-2.0 */
/* Random streams: generators, their registry, streams with the data attached to them, persistence.
 *
 * The C interface checks what is documented below, and nothing else. Functions return 0 (VTS_STATUS_OK)
 * or a negative status unless documented otherwise. A stream is used by one thread at a time; distinct
 * streams run freely at the same time. Registration is finished before concurrent use. <tmk/random.hpp> is
 * the checked C++ API. */
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

/* Second seed word of a SOBOL stream whose own direction numbers follow: "DIRS". */
enum { VTS_SOBOL_DIRECTIONS = 0x53524944 };

/* The request to initStream. */
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

/* The registry, 512 rows each. __RegBrngsNew holds the rows of the identifiers above, __RegBrngs those of the
 * legacy numbers below 0x100000: 0 MCG31M1, 1 R250, 2 MRG32K3A, 3 MCG59, 4 to 276 the sets of WH, 277 SOBOL,
 * 278 NIEDERR; rows 279 and 280 are valid and empty. NumOffsets counts the parameter sets of each row of
 * __RegBrngsNew, NRegBrngsNew the rows in use. */
extern VtsBrngProperties __RegBrngsNew[512];
extern VtsBrngProperties __RegBrngs[512];
extern int32_t NumOffsets[512];
extern int32_t NRegBrngsNew;

/* The functions of every row: __vtsBRng<X>InitStream and the draws __vtss-, __vtsd- and __vtsiBRng<X>. */
#define TMK_VTS_GENERATOR(X)                                                               \
  int32_t __vtsBRng##X##InitStream(int32_t method, VtsStreamHandle stream, int32_t n,      \
                                   const uint32_t* params);                                \
  int32_t __vtssBRng##X(VtsStreamHandle stream, int32_t n, float* r, float a, float b);    \
  int32_t __vtsdBRng##X(VtsStreamHandle stream, int32_t n, double* r, double a, double b); \
  int32_t __vtsiBRng##X(VtsStreamHandle stream, int32_t n, void* r);
TMK_VTS_GENERATOR(MCG31M1)
TMK_VTS_GENERATOR(R250)
TMK_VTS_GENERATOR(MRG32K3A)
TMK_VTS_GENERATOR(MCG59)
TMK_VTS_GENERATOR(WH)
TMK_VTS_GENERATOR(Sobol)
TMK_VTS_GENERATOR(Niederr)
TMK_VTS_GENERATOR(MT19937)
TMK_VTS_GENERATOR(MT2203)
TMK_VTS_GENERATOR(iAbstract)
TMK_VTS_GENERATOR(dAbstract)
TMK_VTS_GENERATOR(sAbstract)
TMK_VTS_GENERATOR(SFMT19937)
TMK_VTS_GENERATOR(TRNG)
TMK_VTS_GENERATOR(ARS5)
TMK_VTS_GENERATOR(PHILOX4X32X10)
#undef TMK_VTS_GENERATOR

/* Adds a generator and returns its identifier, a positive number. VTS_STATUS_BAD_STATE_SIZE for a negative
 * stateBytes, _BAD_WORD_SIZE for a wordBytes other than 4, 8, 16, _BAD_SEED_COUNT and _BAD_BIT_COUNT for
 * counts below 1, _NULL_CALLBACK for a missing function. The 512 rows are not counted: the caller does. */
int32_t __vtsRegisterBrng(const VtsBrngProperties* properties);
int32_t __vtsGetNumRegBrngs(void);
/* Copies the record of an identifier. VTS_STATUS_INVALID_BRNG when there is none. */
int32_t __vtsGetBrngProperties(int32_t brngId, VtsBrngProperties* properties);
/* The table that an identifier means, with the row in it and the parameter set. Nothing is checked. */
VtsBrngProperties* __vtsGetBrngBaseOffset(int32_t brngId, int32_t* row, int32_t* offset);
/* 0 or VTS_STATUS_INVALID_BRNG. Of the legacy table any row below 281 is valid, negative ones too. */
int32_t __vtsIsBrngValid(const VtsBrngProperties* table, int32_t row, int32_t offset);

/* Creates a stream from n seed words. The abstract kinds have constructors of their own and are refused as
 * VTS_STATUS_INVALID_BRNG. When the generator refuses the seeds, its status is returned, and the stream
 * exists for the caller to delete. */
int32_t __vtsNewStreamEx(VtsStreamHandle* stream, int32_t brngId, int32_t n, const uint32_t* seeds);
/* Allocates a stream with nothing but its header. VTS_STATUS_INVALID_BRNG, also for a row without a record;
 * VTS_STATUS_NO_MEMORY. */
int32_t __vtsAllocateStream(VtsStreamHandle* stream, const VtsBrngProperties* table, int32_t brngId,
                            int32_t row, int32_t offset);
/* Frees a stream with its chunks and makes the handle null. */
int32_t __vtsDeleteStream(VtsStreamHandle* stream);
/* A new stream with the whole state and copies of the chunks. */
int32_t __vtsCopyStream(VtsStreamHandle* copy, VtsStreamHandle source);
/* Copies wordBytes * seedWords bytes of the source's state, as far as both blocks reach, and its chunks. A
 * multiplier that leapfrogging changed is not among them. Between generators of two families that leads to
 * VTS_STATUS_BAD_ARGUMENT, the destination unchanged, where the result would hold a position outside its
 * arrays or where the destination is an abstract stream; VTS_STATUS_NO_MEMORY. */
int32_t __vtsCopyStreamState(VtsStreamHandle destination, VtsStreamHandle source);
/* From now on the stream yields elements k, k + nstreams, k + 2 nstreams, ... of what it would have.
 * VTS_STATUS_BAD_NSTREAMS for a negative nstreams, VTS_STATUS_NO_LEAPFROG. */
int32_t __vtsLeapfrogStream(VtsStreamHandle stream, int32_t k, int32_t nstreams);
/* Leaves nskip elements out. VTS_STATUS_NO_SKIPAHEAD. */
int32_t __vtsSkipAheadStream(VtsStreamHandle stream, int64_t nskip);
int32_t __vtsGetStreamStateBrng(VtsStreamHandle stream);

/* 1 when the processor has the instructions of ARS5 (AES and SSE2), and of the hardware generator. */
int32_t __vtsCPUisAES(void);
int32_t __vtsCPUisRDRAND(void);

/* Streams over an array of the caller's, which is circular. When a draw needs more elements than are left,
 * the callback writes from *nmin to *nmax new ones into buffer (*n elements long) from index *idx on, past
 * its end to its beginning, and returns how many it wrote. A negative return is the draw's status; a return
 * below *nmin or above *nmax fails the draw with VTS_STATUS_BAD_ARGUMENT. The array must outlive the stream
 * and its copies; what it holds at first is not used. The d and s kinds hold values of [a, b) and draw their
 * own precision, the i kind holds 32-bit words and draws words; the other draws write nothing and return
 * VTS_STATUS_INVALID_BRNG. VTS_STATUS_BAD_ARGUMENT for n below 1, a null pointer, or a not below b. */
typedef int32_t (*VtsIUpdate)(VtsStreamHandle stream, int32_t* n, uint32_t* buffer, const int32_t* nmin,
                              const int32_t* nmax, const int32_t* idx);
typedef int32_t (*VtsDUpdate)(VtsStreamHandle stream, int32_t* n, double* buffer, const int32_t* nmin,
                              const int32_t* nmax, const int32_t* idx);
typedef int32_t (*VtsSUpdate)(VtsStreamHandle stream, int32_t* n, float* buffer, const int32_t* nmin,
                              const int32_t* nmax, const int32_t* idx);
int32_t __vtsiNewAbstractStream(VtsStreamHandle* stream, int32_t n, const uint32_t* buffer,
                                VtsIUpdate callback);
int32_t __vtsdNewAbstractStream(VtsStreamHandle* stream, int32_t n, const double* buffer, double a, double b,
                                VtsDUpdate callback);
int32_t __vtssNewAbstractStream(VtsStreamHandle* stream, int32_t n, const float* buffer, float a, float b,
                                VtsSUpdate callback);

/* Blobs that a stream carries for a distribution or a generator. A blob under a key that is not all zero is
 * shared: streams that hold the key hold one blob, which lives until the last of them lets go. */
typedef struct VtsChunk {
  uint32_t chunkId;
  uint32_t dataBytes;
  void* data; /* from tmk_serv_allocate */
  struct VtsChunk* next;
  uint32_t key[4];
} VtsChunk;

typedef struct {
  uint32_t key[4];
  uint32_t refCount; /* chunks that point to data */
  void* data;
} VtsGlobRODataEntry;

/* Attaches a blob, which the stream then owns, at the head of the list. A null key makes it private. When the
 * key is known, the chunk takes the shared blob instead, and data stays with the caller.
 * VTS_STATUS_NO_MEMORY. */
int32_t __vtsAddChunk(VtsStreamHandle stream, uint32_t chunkId, const uint32_t* key, void* data,
                      uint32_t dataBytes);
/* The blob of the first chunk of that kind, or null. */
void* __vtsSearchChunk(VtsStreamHandle stream, uint32_t chunkId);
int32_t __vtsGetNumChunks(VtsStreamHandle stream);
/* Appends copies in reverse order; on failure the destination has no chunks. VTS_STATUS_NO_MEMORY. */
int32_t __vtsCopyChunks(VtsStreamHandle destination, VtsStreamHandle source);
int32_t __vtsDeleteChunks(VtsStreamHandle stream);
/* Meant for a kind of which a stream has one chunk: of several other chunks only the last stays in the list.
 */
int32_t __vtsDeleteChunksById(VtsStreamHandle stream, uint32_t chunkId);

/* The table of shared blobs, safe to use from several threads. An entry pointer is good until the next
 * removal. VTS_STATUS_RO_ENTRY_NOT_FOUND for an unknown, null or all-zero key; VTS_STATUS_RO_TABLE_FULL at
 * 128 entries. */
int32_t __vtsCreateGlobRODataTableEntry(VtsGlobRODataEntry** entry, const uint32_t* key, void* data);
int32_t __vtsFindGlobRODataTableEntry(VtsGlobRODataEntry** entry, const uint32_t* key);
int32_t __vtsRegisterGlobRODataReference(VtsChunk* chunk, const uint32_t* key);
int32_t __vtsUnregisterGlobRODataReference(const uint32_t* key);
/* A key that the table does not hold: the time-stamp counter, then the tag. */
int32_t __vtsGenerateNewGlobalRODataTableEntryId(uint32_t* key, int32_t tag);

/* Persistence: a little-endian image of state and chunks, the same in a file and in memory and on 32-bit and
 * 64-bit machines. A nameLength of 0 or more counts the characters of fileName; a negative one means that it
 * is terminated. A save to memory takes __vtsGetStreamSize bytes. VTS_STATUS_NO_MEMORY, _FILE_OPEN,
 * _FILE_CLOSE, _FILE_WRITE, _FILE_READ; loading, when the handle is null afterwards: _BAD_IMAGE,
 * _BAD_IMAGE_VERSION, _NO_RDRAND, _NO_AES. */
int32_t __vtsGetStreamSize(VtsStreamHandle stream);
int32_t __vtsSaveStreamF(VtsStreamHandle stream, const char* fileName, int32_t nameLength);
int32_t __vtsSaveStreamM(VtsStreamHandle stream, void* block);
int32_t __vtsLoadStreamF(VtsStreamHandle* stream, const char* fileName, int32_t nameLength);
int32_t __vtsLoadStreamM(VtsStreamHandle* stream, const void* block);
/* Loads an image of unknown origin: never reads past the block (VTS_STATUS_FILE_READ), and refuses abstract
 * streams, which hold addresses, as VTS_STATUS_BAD_IMAGE. */
int32_t tmk_vts_load_stream_bounded(VtsStreamHandle* stream, const void* block, uint64_t bytes);

/* Distributions. Each fills r with n variates (n below 1: nothing happens) and returns the status of the
 * first draw that failed, with the elements before it written, or of the last draw. Parameters are not
 * checked. `method` is 0 unless documented otherwise; u is uniform over (0, 1), and a logarithm of 0 that of
 * the smallest positive number. d draws doubles, s singles, each in its own precision. A sequence does not
 * depend on how it is cut into draws, but for Gaussian method 0. */

/* Uniform over (a, b); rounding may yield a or b. With VTS_METHOD_ACCURATE nothing outside [a, b] comes out.
 */
enum { VTS_METHOD_ACCURATE = 0x40000000 };
int32_t _vtsdRngUniform(int32_t method, VtsStreamHandle stream, int32_t n, double* r, double a, double b);
int32_t _vtssRngUniform(int32_t method, VtsStreamHandle stream, int32_t n, float* r, float a, float b);
/* a + beta (-ln u) */
int32_t _vtsdRngExponential(int32_t method, VtsStreamHandle stream, int32_t n, double* r, double a,
                            double beta);
int32_t _vtssRngExponential(int32_t method, VtsStreamHandle stream, int32_t n, float* r, float a, float beta);
/* a + beta tan(pi (u - 1/2)) */
int32_t _vtsdRngCauchy(int32_t method, VtsStreamHandle stream, int32_t n, double* r, double a, double beta);
int32_t _vtssRngCauchy(int32_t method, VtsStreamHandle stream, int32_t n, float* r, float a, float beta);
/* a + beta ln(-ln u): the law of the least of many. That of the greatest has a negative beta. */
int32_t _vtsdRngGumbel(int32_t method, VtsStreamHandle stream, int32_t n, double* r, double a, double beta);
int32_t _vtssRngGumbel(int32_t method, VtsStreamHandle stream, int32_t n, float* r, float a, float beta);
/* a - beta ln u or a + beta ln u, by a second uniform: two per element. */
int32_t _vtsdRngLaplace(int32_t method, VtsStreamHandle stream, int32_t n, double* r, double a, double beta);
int32_t _vtssRngLaplace(int32_t method, VtsStreamHandle stream, int32_t n, float* r, float a, float beta);
/* a + beta sqrt(-ln u): beta is sqrt(2) times the usual scale. */
int32_t _vtsdRngRayleigh(int32_t method, VtsStreamHandle stream, int32_t n, double* r, double a, double beta);
int32_t _vtssRngRayleigh(int32_t method, VtsStreamHandle stream, int32_t n, float* r, float a, float beta);
/* a + beta (-ln u)^(1/alpha) */
int32_t _vtsdRngWeibull(int32_t method, VtsStreamHandle stream, int32_t n, double* r, double alpha, double a,
                        double beta);
int32_t _vtssRngWeibull(int32_t method, VtsStreamHandle stream, int32_t n, float* r, float alpha, float a,
                        float beta);
/* Normal with mean a and standard deviation sigma. Methods, not checked: 0 pairs by Box and Muller, of which
 * an odd draw drops the last number; 1 the same, where the stream keeps that number for the next draw of the
 * same precision (VTS_STATUS_NO_MEMORY); 2 by inversion; 3 by a ziggurat, from units of 64 bits (singles:
 * 32): one for most variates, two where a height or the tail asks for a second. Generators without words of
 * 32 bits give units by open uniforms; SOBOL and NIEDERR inversion of these. */
int32_t _vtsdRngGaussian(int32_t method, VtsStreamHandle stream, int32_t n, double* r, double a,
                         double sigma);
int32_t _vtssRngGaussian(int32_t method, VtsStreamHandle stream, int32_t n, float* r, float a, float sigma);
/* n vectors a + T z of dimen components, z normal by the methods of Gaussian in one sequence, T lower
 * triangular: storage 0 by whole rows, of which what is above the diagonal is not read; 1 the rows of the
 * lower triangle; 2 the diagonal. T T' is the covariance. Component j of vector i is r[i dimen + j]. Checked,
 * in this order: method (VTS_STATUS_BAD_METHOD); storage, dimen below 1, null or non-finite a and T
 * (VTS_STATUS_BAD_ARGUMENT); VTS_STATUS_NO_MEMORY. */
int32_t _vtsdRngGaussianMV(int32_t method, VtsStreamHandle stream, int32_t n, double* r, int32_t dimen,
                           int32_t storage, const double* a, const double* t);
int32_t _vtssRngGaussianMV(int32_t method, VtsStreamHandle stream, int32_t n, float* r, int32_t dimen,
                           int32_t storage, const float* a, const float* t);
/* b + beta e^z, z normal: method 0 by Gaussian method 1, any other by 2. An overflow of e^z is reported as
 * the thread's mode sets. */
int32_t _vtsdRngLognormal(int32_t method, VtsStreamHandle stream, int32_t n, double* r, double a,
                          double sigma, double b, double beta);
int32_t _vtssRngLognormal(int32_t method, VtsStreamHandle stream, int32_t n, float* r, float a, float sigma,
                          float b, float beta);
/* The methods of Gaussian, the first three without its care for singular logarithms. */
int32_t _vdRngGaussianBoxMuller(VtsStreamHandle stream, int32_t n, double* r, double a, double sigma);
int32_t _vsRngGaussianBoxMuller(VtsStreamHandle stream, int32_t n, float* r, float a, float sigma);
int32_t _vdRngGaussianBoxMuller2(VtsStreamHandle stream, int32_t n, double* r, double a, double sigma);
int32_t _vsRngGaussianBoxMuller2(VtsStreamHandle stream, int32_t n, float* r, float a, float sigma);
int32_t _vdRngGaussianICDF(VtsStreamHandle stream, int32_t n, double* r, double a, double sigma);
int32_t _vsRngGaussianICDF(VtsStreamHandle stream, int32_t n, float* r, float a, float sigma);
int32_t _vdRngGaussianZiggurat(VtsStreamHandle stream, int32_t n, double* r, double a, double sigma);
int32_t _vsRngGaussianZiggurat(VtsStreamHandle stream, int32_t n, float* r, float a, float sigma);

/* Laws by rejection. A candidate takes a fixed number of open uniform doubles, which depends on the shapes
 * alone; as many are drawn as it takes to accept n. Checked, in this order: method, 0
 * (VTS_STATUS_BAD_METHOD); parameters (VTS_STATUS_BAD_ARGUMENT: a is finite, every other one positive and
 * finite). n below 1 does nothing then. VTS_STATUS_BAD_ARGUMENT, too, for a generator of whose candidates
 * 4096 in a row are rejected. */
/* a + beta g, g of density g^(alpha - 1) e^-g / Gamma(alpha) (G. Marsaglia and W. Tsang, ACM TOMS 26 (2000)).
 * The stream keeps the set-up of the last shape in each precision (VTS_STATUS_NO_MEMORY). Two uniforms, one
 * for alpha 1, three below 1 other than 1/2. */
int32_t _vtsdRngGamma(int32_t method, VtsStreamHandle stream, int32_t n, double* r, double alpha, double a,
                      double beta);
int32_t _vtssRngGamma(int32_t method, VtsStreamHandle stream, int32_t n, float* r, float alpha, float a,
                      float beta);
/* a + beta x, x of density x^(p - 1) (1 - x)^(q - 1) / B(p, q): the ratio x / (x + y) of two gamma variates,
 * with the uniforms of both. */
int32_t _vtsdRngBeta(int32_t method, VtsStreamHandle stream, int32_t n, double* r, double p, double q,
                     double a, double beta);
int32_t _vtssRngBeta(int32_t method, VtsStreamHandle stream, int32_t n, float* r, float p, float q, float a,
                     float beta);

/* Integers from a to b - 1; b itself where a uniform is rounded up to it. */
int32_t _vtsiRngUniform(int32_t method, VtsStreamHandle stream, int32_t n, int32_t* r, int32_t a, int32_t b);
/* 1 with probability p, rounded to single precision; else 0. */
int32_t _vtsiRngBernoulli(int32_t method, VtsStreamHandle stream, int32_t n, int32_t* r, double p);
/* Failures before the first success: floor(ln u / ln(1 - p)), in single precision. INT32_MIN where that does
 * not fit. */
int32_t _vtsiRngGeometric(int32_t method, VtsStreamHandle stream, int32_t n, int32_t* r, double p);
/* Discrete laws, exact but for 2^-53 of the probability: VTS_STATUS_BAD_METHOD for a method other than 0,
 * then VTS_STATUS_BAD_ARGUMENT for parameters that are none, VTS_STATUS_NO_MEMORY, and the statuses of draws.
 * What a law computes of its parameters is kept with the stream until it is called with others. A variate
 * takes one uniform of 53 bits where some 60 to 250 values hold the probability, and otherwise two each time
 * it is tried.
 *
 * Poisson: lambda above 0 and up to 2^31 - 2^19. */
int32_t _vtsiRngPoisson(int32_t method, VtsStreamHandle stream, int32_t n, int32_t* r, double lambda);
int32_t _viRngPoissonPtpe(VtsStreamHandle stream, int32_t n, int32_t* r, double lambda);
/* Poisson, r[i] with mean lambda[i]. Nothing is kept; one uniform for means below 20. */
int32_t _vtsiRngPoissonV(int32_t method, VtsStreamHandle stream, int32_t n, int32_t* r, const double* lambda);
/* Successes in ntrial trials, 0 or more of them, with probability p, from 0 to 1. */
int32_t _vtsiRngBinomial(int32_t method, VtsStreamHandle stream, int32_t n, int32_t* r, int32_t ntrial,
                         double p);
/* Failures before success number a, of any a > 0, with probability 2^-50 <= p <= 1 and a mean a (1 - p) / p
 * up to INT32_MAX. A variate above that is INT32_MAX. */
int32_t _vtsiRngNegbinomial(int32_t method, VtsStreamHandle stream, int32_t n, int32_t* r, double a,
                            double p);
/* Marked elements in a sample of s from l elements, m of which are marked; 0 <= s, m <= l. */
int32_t _vtsiRngHypergeometric(int32_t method, VtsStreamHandle stream, int32_t n, int32_t* r, int32_t l,
                               int32_t s, int32_t m);
/* n vectors of k counts, one after the other: how many of ntrial trials, 0 or more, fall into each of k >= 1
 * classes. The probabilities p are none below 0, and their sum is 1 to within 1e-9. Nothing is kept. */
int32_t _vtsiRngMultinomial(int32_t method, VtsStreamHandle stream, int32_t n, int32_t* r, int32_t ntrial,
                            int32_t k, const double* p);
/* The generator's own elements, of the record's wordBytes each. */
int32_t _vtsiRngUniformBits(int32_t method, VtsStreamHandle stream, int32_t n, void* r);
/* Words of 32 and 64 random bits: those of generators with words of 32 bits (64: two words, the lower first),
 * and the upper 32 of MCG59's 59 bits. VTS_STATUS_NO_FIXED_WIDTH_BITS for other generators, with nothing
 * done. */
int32_t _vtsiRngUniformBits32(int32_t method, VtsStreamHandle stream, int32_t n, uint32_t* r);
int32_t _vtsiRngUniformBits64(int32_t method, VtsStreamHandle stream, int32_t n, uint64_t* r);
/* The same laws over uniforms u that are neither end of their interval, so that no variate comes from a
 * repaired logarithm. Doubles take two elements (two each: Laplace) of generators whose elements have 32 bits
 * or less, and u holds 53 bits; singles take one. An element of SOBOL and NIEDERR is a uniform. In words
 * 0 to m - 1, u = (x + 1/2) / m, and (x + (y + 1/2) / m) / m of two, y drawn first. Parameters are those of
 * _vtsdRng..., without VTS_METHOD_ACCURATE: uniforms lie between a and b. */
int32_t tmk_vtsdRngUniform(VtsStreamHandle stream, int32_t n, double* r, double a, double b);
int32_t tmk_vtssRngUniform(VtsStreamHandle stream, int32_t n, float* r, float a, float b);
int32_t tmk_vtsdRngExponential(VtsStreamHandle stream, int32_t n, double* r, double a, double beta);
int32_t tmk_vtssRngExponential(VtsStreamHandle stream, int32_t n, float* r, float a, float beta);
int32_t tmk_vtsdRngCauchy(VtsStreamHandle stream, int32_t n, double* r, double a, double beta);
int32_t tmk_vtssRngCauchy(VtsStreamHandle stream, int32_t n, float* r, float a, float beta);
int32_t tmk_vtsdRngGumbel(VtsStreamHandle stream, int32_t n, double* r, double a, double beta);
int32_t tmk_vtssRngGumbel(VtsStreamHandle stream, int32_t n, float* r, float a, float beta);
int32_t tmk_vtsdRngLaplace(VtsStreamHandle stream, int32_t n, double* r, double a, double beta);
int32_t tmk_vtssRngLaplace(VtsStreamHandle stream, int32_t n, float* r, float a, float beta);
int32_t tmk_vtsdRngRayleigh(VtsStreamHandle stream, int32_t n, double* r, double a, double beta);
int32_t tmk_vtssRngRayleigh(VtsStreamHandle stream, int32_t n, float* r, float a, float beta);
int32_t tmk_vtsdRngWeibull(VtsStreamHandle stream, int32_t n, double* r, double alpha, double a, double beta);
int32_t tmk_vtssRngWeibull(VtsStreamHandle stream, int32_t n, float* r, float alpha, float a, float beta);
int32_t tmk_vtsdRngGaussian(int32_t method, VtsStreamHandle stream, int32_t n, double* r, double a,
                            double sigma);
int32_t tmk_vtssRngGaussian(int32_t method, VtsStreamHandle stream, int32_t n, float* r, float a,
                            float sigma);
int32_t tmk_vtsdRngGaussianMV(int32_t method, VtsStreamHandle stream, int32_t n, double* r, int32_t dimen,
                              int32_t storage, const double* a, const double* t);
int32_t tmk_vtssRngGaussianMV(int32_t method, VtsStreamHandle stream, int32_t n, float* r, int32_t dimen,
                              int32_t storage, const float* a, const float* t);
int32_t tmk_vtsdRngLognormal(int32_t method, VtsStreamHandle stream, int32_t n, double* r, double a,
                             double sigma, double b, double beta);
int32_t tmk_vtssRngLognormal(int32_t method, VtsStreamHandle stream, int32_t n, float* r, float a,
                             float sigma, float b, float beta);
/* Integers from low to high, both included, each as likely as any other: of two elements, drawn anew where
 * they belong to the few pairs that are left over. MCG59, WH and generators registered by the caller give
 * floor(u width), even but for width / 2^53; SOBOL and NIEDERR the same, of one element.
 * VTS_STATUS_BAD_ARGUMENT for a generator that is stuck at such pairs. */
int32_t tmk_vtsiRngUniform(VtsStreamHandle stream, int32_t n, int32_t* r, int32_t low, int32_t high);
/* 1 with probability p, to within 2^-53; never for p = 0, always for p = 1. */
int32_t tmk_vtsiRngBernoulli(VtsStreamHandle stream, int32_t n, int32_t* r, double p);
/* Failures before the first success, from doubles: p of 2e-8 or more keeps every variate below 2^31. */
int32_t tmk_vtsiRngGeometric(VtsStreamHandle stream, int32_t n, int32_t* r, double p);
/* How many elements of the stream's generator one uniform of 8 or 4 bytes takes in the functions above. */
int32_t tmk_vts_elements_of_uniform(VtsStreamHandle stream, int32_t bytes);

/* The same for a stream whose generator is known. */
#define TMK_VTS_FIXED_WIDTH(name)                                                \
  int32_t _viRngUniformBits32##name(VtsStreamHandle stream, int32_t n, void* r); \
  int32_t _viRngUniformBits64##name(VtsStreamHandle stream, int32_t n, void* r);
TMK_VTS_FIXED_WIDTH(MCG31)
TMK_VTS_FIXED_WIDTH(R250)
TMK_VTS_FIXED_WIDTH(MRG32K3A)
TMK_VTS_FIXED_WIDTH(MCG59)
TMK_VTS_FIXED_WIDTH(WH)
TMK_VTS_FIXED_WIDTH(SOBOL)
TMK_VTS_FIXED_WIDTH(NIEDERREITER)
TMK_VTS_FIXED_WIDTH(MT19937)
TMK_VTS_FIXED_WIDTH(MT2203)
TMK_VTS_FIXED_WIDTH(IABSTRACT)
TMK_VTS_FIXED_WIDTH(DABSTRACT)
TMK_VTS_FIXED_WIDTH(SABSTRACT)
TMK_VTS_FIXED_WIDTH(SFMT19937)
TMK_VTS_FIXED_WIDTH(NONDETERM)
TMK_VTS_FIXED_WIDTH(ARS5)
TMK_VTS_FIXED_WIDTH(PHILOX4X32X10)
#undef TMK_VTS_FIXED_WIDTH

#ifdef __GNUC__
#pragma GCC visibility pop
#endif
#ifdef __cplusplus
}
#endif
#endif
