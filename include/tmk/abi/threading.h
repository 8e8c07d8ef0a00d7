/* SPDX-License-Identifier: Apache-2.0 */
/* Threads for a computation: the statistics and fitting functions take a table like this as their last
 * argument and run their workers through it. They make no threads in another way. */
#ifndef TMK_ABI_THREADING_H
#define TMK_ABI_THREADING_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#ifdef __GNUC__
#pragma GCC visibility push(default)
#endif

/* A piece of work: the item (or, under ParallelRun, the thread), the thread that picks the slice of scratch
 * (0 under ParallelRun), the count of threads of the call, and the call's context. Workers report failure in
 * the context. */
typedef void (*TmkWorker)(int32_t item, int32_t thread, int32_t threadCount, void* context);

/* Each function returns when all its workers have returned. No worker of one run may still be running when
 * another run of the same table begins within it. */
typedef struct ThreadingService {
  /* worker(item, thread, threadCount, context) once for each item from 0 to count - 1. No two items run at
   * the same time under one thread index, and the index is below threadCount. */
  void (*ParallelFor)(int32_t count, int32_t threadCount, void* context, TmkWorker worker);
  /* The same; a worker may call OrderedSection once for its item. */
  void (*ParallelForOrdered)(int32_t count, int32_t threadCount, void* context, TmkWorker worker);
  /* worker(thread, 0, threadCount, context) once for each thread from 0 to threadCount - 1. */
  void (*ParallelRun)(int32_t threadCount, void* context, TmkWorker worker);
  /* From inside a worker of ParallelForOrdered: runs section with these arguments when all lower items have
   * passed theirs, one at a time. */
  void (*OrderedSection)(int32_t item, int32_t thread, int32_t threadCount, void* context, TmkWorker section);
  /* The largest threadCount that may be requested, at least 1. */
  int32_t (*MaxThreads)(void);
} ThreadingService;

/* Everything in the caller's thread, in the order of the items. */
const ThreadingService* tmk_threading_serial(void);
/* The library's own threads, made when they are first needed and shared by all callers. MaxThreads is the
 * value of omp_get_max_threads() in the calling thread where the program has OpenMP; elsewhere the
 * environment variable OMP_NUM_THREADS, or else the count of processors. Fewer threads than requested may
 * run, by tmk_threading_limit or because the system gives no more; inside another run, inside an OpenMP
 * region, and in a forked child of a process with threads the caller's runs alone. Items go to thread indices
 * by a fixed rule, so results that depend on the thread count alone are the same from run to run. */
const ThreadingService* tmk_threading_pool(void);
/* The same table, under the name that it had while its threads were OpenMP's. */
const ThreadingService* tmk_threading_openmp(void);
/* The most threads that work on one run of tmk_threading_pool: four for each processor, or the limit of
 * OpenMP where that is lower. */
int32_t tmk_threading_limit(void);

#ifdef __GNUC__
#pragma GCC visibility pop
#endif
#ifdef __cplusplus
}
#endif
#endif
