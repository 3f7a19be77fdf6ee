#include "kelp0lang/ShaBlocks.h"

#include <bit>
#include <utility>

#include "kelp0lang/BigEndian.h"
#include "kelp0lang/Wipe.h"
#include "kelptext/Compiler.h"

#if defined(__x86_64__)
#include <cpuid.h>
#include <immintrin.h>
#endif

namespace kelp::detail {
namespace {

constexpr std::size_t kSteps = 80;
constexpr std::size_t kRing = 16;  // words of the schedule that later ones are made of

// The function and the constant of a step, which change every 20 steps.
template <std::size_t step>
std::uint32_t Mix(std::uint32_t b, std::uint32_t c, std::uint32_t d) noexcept {
  if constexpr (step < 20) return (d ^ (b & (c ^ d))) + 0x5A827999;
  if constexpr (step >= 20 && step < 40) return (b ^ c ^ d) + 0x6ED9EBA1;
  if constexpr (step >= 40 && step < 60) return ((b & c) | (d & (b | c))) + 0x8F1BBCDC;
  if constexpr (step >= 60) return (b ^ c ^ d) + 0xCA62C1D6;
}

// One step. The five words don't move: each step takes them under other names.
template <std::size_t step>
KELP_ALWAYS_INLINE void Step(std::uint32_t (&words)[kShaWords], std::uint32_t (&ring)[kRing],
                             const unsigned char* block) noexcept {
  constexpr auto At = [](std::size_t name) { return (kSteps - step + name) % kShaWords; };
  std::uint32_t& word = ring[step % kRing];
  if constexpr (step < kRing) {
    word = LoadBigEndian(block + 4 * step);
  } else {
    word = std::rotl(
        ring[(step + 13) % kRing] ^ ring[(step + 8) % kRing] ^ ring[(step + 2) % kRing] ^ word, 1);
  }
  std::uint32_t& b = words[At(1)];
  words[At(4)] += std::rotl(words[At(0)], 5) + Mix<step>(b, words[At(2)], words[At(3)]) + word;
  b = std::rotl(b, 30);
}

template <std::size_t... steps>
KELP_ALWAYS_INLINE void AllSteps(std::index_sequence<steps...>, std::uint32_t (&words)[kShaWords],
                                 std::uint32_t (&ring)[kRing],
                                 const unsigned char* block) noexcept {
  (Step<steps>(words, ring, block), ...);
}

void PortableForm(std::uint32_t* state, const unsigned char* blocks, std::size_t count) {
  std::uint32_t ring[kRing];
  for (; count > 0; --count, blocks += kShaBlock) {
    std::uint32_t words[kShaWords] = {state[0], state[1], state[2], state[3], state[4]};
    AllSteps(std::make_index_sequence<kSteps>(), words, ring, blocks);
    for (std::size_t i = 0; i < kShaWords; ++i) state[i] += words[i];
  }
  Wipe(ring, sizeof ring);
}

#if defined(__x86_64__)

// What a block is taken with; it stays in the registers and so needn't be wiped. The words of the
// state stand with a on top; four steps at once make a group, and e of a group comes out of the a
// of the group before.
struct ShaRegisters {
  __m128i abcd;
  __m128i former;  // abcd before the last group
  __m128i e;
  __m128i ring[4];
};

template <std::size_t group>
KELP_TARGET("sha,sse4.1")
KELP_ALWAYS_INLINE void Group(ShaRegisters& at, const unsigned char* block) noexcept {
  __m128i& words = at.ring[group % 4];
  if constexpr (group < 4) {
    const __m128i bytesReversed = _mm_set_epi64x(0x0001020304050607, 0x08090A0B0C0D0E0F);
    const auto* const source = reinterpret_cast<const __m128i*>(block + 16 * group);
    words = _mm_shuffle_epi8(_mm_loadu_si128(source), bytesReversed);
  } else {
    words = _mm_sha1msg1_epu32(words, at.ring[(group + 1) % 4]);
    words = _mm_xor_si128(words, at.ring[(group + 2) % 4]);
    words = _mm_sha1msg2_epu32(words, at.ring[(group + 3) % 4]);
  }
  const __m128i summed =
      group == 0 ? _mm_add_epi32(at.e, words) : _mm_sha1nexte_epu32(at.former, words);
  at.former = at.abcd;
  at.abcd = _mm_sha1rnds4_epu32(at.abcd, summed, group / 5);
}

template <std::size_t... groups>
KELP_TARGET("sha,sse4.1")
KELP_ALWAYS_INLINE void AllGroups(std::index_sequence<groups...>, ShaRegisters& at,
                                  const unsigned char* block) noexcept {
  (Group<groups>(at, block), ...);
}

KELP_TARGET("sha,sse4.1")
void InstructionsForm(std::uint32_t* state, const unsigned char* blocks, std::size_t count) {
  constexpr int kReversed = 0x1B;
  auto* const stored = reinterpret_cast<__m128i*>(state);
  ShaRegisters at;
  at.abcd = _mm_shuffle_epi32(_mm_loadu_si128(stored), kReversed);
  at.e = _mm_set_epi32(static_cast<int>(state[4]), 0, 0, 0);
  for (; count > 0; --count, blocks += kShaBlock) {
    const __m128i abcd = at.abcd;
    AllGroups(std::make_index_sequence<kSteps / 4>(), at, blocks);
    at.e = _mm_sha1nexte_epu32(at.former, at.e);
    at.abcd = _mm_add_epi32(at.abcd, abcd);
  }
  _mm_storeu_si128(stored, _mm_shuffle_epi32(at.abcd, kReversed));
  state[4] = static_cast<std::uint32_t>(_mm_extract_epi32(at.e, 3));
}

bool HasShaInstructions() noexcept {
  unsigned a = 0, b = 0, c = 0, d = 0;
  if (__get_cpuid(1, &a, &b, &c, &d) == 0) return false;
  const bool hasSse41 = (c & bit_SSSE3) != 0 && (c & bit_SSE4_1) != 0;
  return hasSse41 && __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 && (b & bit_SHA) != 0;
}

constexpr ShaBlocksForm* kForms[] = {&PortableForm, &InstructionsForm};

#else

bool HasShaInstructions() noexcept {
  return false;
}

constexpr ShaBlocksForm* kForms[] = {&PortableForm};

#endif

}  // namespace

std::span<ShaBlocksForm* const> ShaBlocksForms() noexcept {
  return std::span(kForms).first(HasShaInstructions() ? std::size(kForms) : 1);
}

}  // namespace kelp::detail
