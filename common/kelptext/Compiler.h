// What compilers say in words of their own. Every other source is C++20 as it stands, so this is
// the one place to look at for another compiler.
//
//   KELP_NOINLINE void Rare();
//   const std::uint64_t swapped = detail::ReversedBytes(word);
//
// Here are the words of gcc and clang, and those of Microsoft's compiler, which wasn't run.
#pragma once

#include <cstdint>

#ifdef _MSC_VER
#include <intrin.h>
#include <stdlib.h>
#endif

// KELP_VISIBLE marks what is seen outside a shared library where all else is hidden;
// KELP_EXPORT and KELP_IMPORT are the two ends of a DLL. KELP_TARGET lets a function use
// instructions that not every machine has. An object that is KELP_BUILT_FIRST is built before those
// of a program that has the library within itself, and goes behind them, as the loader sees to it
// for a shared library; its source says KELP_BUILDS_FIRST above all its objects.
#ifdef _MSC_VER
#define KELP_VISIBLE
#define KELP_EXPORT __declspec(dllexport)
#define KELP_IMPORT __declspec(dllimport)
#define KELP_NOINLINE __declspec(noinline)
#define KELP_ALWAYS_INLINE __forceinline
#define KELP_TARGET(instructions)
#define KELP_BUILDS_FIRST __pragma(warning(suppress : 4073)) __pragma(init_seg(lib))
#define KELP_BUILT_FIRST
#else
#define KELP_VISIBLE __attribute__((visibility("default")))
#define KELP_EXPORT __attribute__((dllexport))
#define KELP_IMPORT __attribute__((dllimport))
#define KELP_NOINLINE __attribute__((noinline))
#define KELP_ALWAYS_INLINE __attribute__((always_inline)) inline
#define KELP_TARGET(instructions) __attribute__((target(instructions)))
#define KELP_BUILDS_FIRST
#define KELP_BUILT_FIRST __attribute__((init_priority(101)))
#endif

namespace kelp::detail {

// Between the two orders of bytes.
inline std::uint64_t ReversedBytes(std::uint64_t word) noexcept {
#ifdef _MSC_VER
  return _byteswap_uint64(word);
#else
  return __builtin_bswap64(word);
#endif
}
inline std::uint32_t ReversedBytes(std::uint32_t word) noexcept {
#ifdef _MSC_VER
  return _byteswap_ulong(word);
#else
  return __builtin_bswap32(word);
#endif
}

// A sum or product of unsigned numbers, cut to their width, and whether it was too wide.
template <class T>
bool AddOverflows(T a, T b, T* sum) noexcept {
#ifdef _MSC_VER
  *sum = static_cast<T>(a + b);
  return *sum < a;
#else
  return __builtin_add_overflow(a, b, sum);
#endif
}
template <class T>
bool MultiplyOverflows(T a, T b, T* product) noexcept {
#ifdef _MSC_VER
  *product = static_cast<T>(std::uint64_t{a} * b);
  return b != 0 && a > static_cast<T>(~T{0}) / b;
#else
  return __builtin_mul_overflow(a, b, product);
#endif
}

// All 128 bits of a product.
struct WideProduct {
  std::uint64_t high;
  std::uint64_t low;
};
inline WideProduct MultiplyWide(std::uint64_t a, std::uint64_t b) noexcept {
#ifdef _MSC_VER
  WideProduct product;
  product.low = _umul128(a, b, &product.high);
  return product;
#else
  __extension__ using Wide = unsigned __int128;
  const Wide product = Wide{a} * b;
  return {static_cast<std::uint64_t>(product >> 64), static_cast<std::uint64_t>(product)};
#endif
}

// The compiler takes it that somebody reads the memory here, and so drops no store into it.
inline void KeepStores(const void* memory) noexcept {
#ifdef _MSC_VER
  static_cast<void>(*static_cast<const volatile char*>(memory));
  _ReadWriteBarrier();
#else
  __asm__ __volatile__("" : : "r"(memory) : "memory");
#endif
}

}  // namespace kelp::detail
