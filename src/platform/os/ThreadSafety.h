#pragma once

/// Names for clang's thread-safety attributes; empty for other compilers.
#if defined(__clang__)
#define KORVEX_TSA(x) __attribute__((x))
#else
#define KORVEX_TSA(x)
#endif

#define KORVEX_CAPABILITY(name) KORVEX_TSA(capability(name))
#define KORVEX_SCOPED_CAPABILITY KORVEX_TSA(scoped_lockable)
#define KORVEX_GUARDED_BY(lock) KORVEX_TSA(guarded_by(lock))
#define KORVEX_PT_GUARDED_BY(lock) KORVEX_TSA(pt_guarded_by(lock))
#define KORVEX_REQUIRES(...) KORVEX_TSA(requires_capability(__VA_ARGS__))
#define KORVEX_EXCLUDES(...) KORVEX_TSA(locks_excluded(__VA_ARGS__))
#define KORVEX_ACQUIRE(...) KORVEX_TSA(acquire_capability(__VA_ARGS__))
#define KORVEX_RELEASE(...) KORVEX_TSA(release_capability(__VA_ARGS__))
#define KORVEX_TRY_ACQUIRE(...) KORVEX_TSA(try_acquire_capability(__VA_ARGS__))
#define KORVEX_ASSERT_CAPABILITY(lock) KORVEX_TSA(assert_capability(lock))
#define KORVEX_NO_THREAD_SAFETY_ANALYSIS KORVEX_TSA(no_thread_safety_analysis)
