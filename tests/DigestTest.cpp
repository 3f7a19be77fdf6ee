// Digest, cipher and key derivation against the answers that FIPS 180 and NIST publish.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include "kelp0lang/BigEndian.h"
#include "kelp0lang/Des3.h"
#include "kelp0lang/KeyDerivation.h"
#include "kelp0lang/Sha.h"
#include "kelp0lang/ShaBlocks.h"

using kelp::detail::LoadBigEndian;
using kelp::detail::StoreBigEndian;
using namespace std::string_literals;

namespace {

using Digest = std::array<std::uint32_t, 5>;

constexpr Digest kNoDigest = {};

void Update(CSha& sha, const std::string& text) {
  sha.Update(static_cast<unsigned>(text.size()), text.data());
}

// The first words of the digest, and zeros behind them.
Digest ResultOf(CSha& sha, unsigned size = 20) {
  unsigned char bytes[20] = {};
  Digest digest = {};
  if (!sha.Result(size, bytes)) return digest;
  for (std::size_t i = 0; i < digest.size(); ++i) digest[i] = LoadBigEndian(bytes + 4 * i);
  return digest;
}

const std::string kTwoBlocks = "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq";
constexpr Digest kOfTwoBlocks = {0x84983E44, 0x1C3BD26E, 0xBAAE4AA1, 0xF95129E5, 0xE54670F1};
constexpr Digest kOfNothing = {0xDA39A3EE, 0x5E6B4B0D, 0x3255BFEF, 0x95601890, 0xAFD80709};

TEST(Sha, PublishedMessagesCutAtEveryByte) {
  const struct {
    std::string message;
    Digest digest;
  } cases[] = {
      {"", kOfNothing},
      {"abc", {0xA9993E36, 0x4706816A, 0xBA3E2571, 0x7850C26C, 0x9CD0D89D}},
      {kTwoBlocks, kOfTwoBlocks},
      {"abcdefghbcdefghicdefghijdefghijkefghijklfghijklmghijklmn"
       "hijklmnoijklmnopjklmnopqklmnopqrlmnopqrsmnopqrstnopqrstu",
       {0xA49B2446, 0xA02C645B, 0xF419F995, 0xB6709125, 0x3A04A259}},
      {std::string(1'000'000, 'a'), {0x34AA973C, 0xD4C4DAA4, 0xF61EEB2B, 0xDBAD2731, 0x6534016F}},
  };
  CSha sha;
  for (const auto& test : cases) {
    for (std::size_t split = 0; split <= test.message.size() && split <= 130; ++split) {
      Update(sha, test.message.substr(0, split));
      Update(sha, test.message.substr(split));
      EXPECT_EQ(sha.GetBitCountLo(), 8 * test.message.size());
      ASSERT_EQ(ResultOf(sha), test.digest) << test.message.size() << " at " << split;
    }
  }
}

// Every form that this processor runs, on a message with its padding at an odd address.
TEST(Sha, FormsOfTheCompressionAgree) {
  for (kelp::detail::ShaBlocksForm* const form : kelp::detail::ShaBlocksForms()) {
    unsigned char blocks[1 + 2 * kelp::detail::kShaBlock] = {};
    std::memcpy(blocks + 1, kTwoBlocks.data(), kTwoBlocks.size());
    blocks[1 + kTwoBlocks.size()] = 0x80;
    StoreBigEndian(8 * 56, blocks + 1 + 124);
    Digest state = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0};
    form(state.data(), blocks + 1, 2);
    EXPECT_EQ(state, kOfTwoBlocks);
  }
}

// NIST's message of 2^30 bytes, whose bits take more than 32, and on beyond 2^32 bytes.
TEST(Sha, BitsAreCountedBeyond32) {
  std::string piece;
  while (piece.size() < 1 << 20) {
    piece += "abcdefghbcdefghicdefghijdefghijkefghijklfghijklmghijklmnhijklmno";
  }
  CSha sha;
  for (int i = 0; i < 1024; ++i) Update(sha, piece);
  EXPECT_EQ(sha.GetBitCountHi(), 2u);
  CSha fork = sha;
  EXPECT_EQ(ResultOf(fork), (Digest{0x7789F0C9, 0xEF7BFC40, 0xD9331114, 0x3DFBE69E, 0x2017F592}));
  for (int i = 0; i < 3 * 1024; ++i) Update(sha, piece);
  Update(sha, "abc");
  EXPECT_EQ(sha.GetBitCountHi(), 8u);
  EXPECT_EQ(sha.GetBitCountLo(), 24u);
}

TEST(Sha, AResultStartsAnewAndARefusedOneGoesOn) {
  CSha sha;
  Update(sha, kTwoBlocks.substr(0, 7));
  EXPECT_EQ(ResultOf(sha, 21), kNoDigest);
  Update(sha, kTwoBlocks.substr(7));
  EXPECT_EQ(ResultOf(sha, 8), (Digest{kOfTwoBlocks[0], kOfTwoBlocks[1]}));
  EXPECT_EQ(ResultOf(sha), kOfNothing);
  Update(sha, "abc");
  sha.Reset();
  EXPECT_EQ(ResultOf(sha), kOfNothing);
}

CDes3 Cipher(bool forward, const std::string& key) {
  CDes3 cipher;
  cipher.SetKey(forward, 0, key.data());
  return cipher;
}

// In place, at an odd address.
std::string Processed(const CDes3& cipher, const std::string& block, const char* other = nullptr) {
  std::string bytes = '?' + block;
  cipher.ProcessBlock(bytes.data() + 1, other, bytes.data() + 1);
  return bytes.substr(1);
}

const std::string kThreeKeys =
    "\x01\x23\x45\x67\x89\xAB\xCD\xEF\x23\x45\x67\x89\xAB\xCD\xEF\x01\x45\x67\x89\xAB\xCD\xEF\x01"
    "\x23";

// The example of publication 800-67.
TEST(Des3, ThreeKeysInBothDirections) {
  const std::string plain = "The qufck brown fox jump";
  const std::string secret =
      "\xA8\x26\xFD\x8C\xE5\x3B\x85\x5F\xCC\xE2\x1C\x81\x12\x25\x6F\xE6"
      "\x68\xD5\xC0\x5D\xD9\xB6\xB9"s +
      '\0';
  const CDes3 forward = Cipher(true, kThreeKeys), reverse = Cipher(false, kThreeKeys);
  for (int i = 0; i < 24; i += 8) {
    EXPECT_EQ(Processed(forward, plain.substr(i, 8)), secret.substr(i, 8));
    EXPECT_EQ(Processed(reverse, secret.substr(i, 8)), plain.substr(i, 8));
  }
  EXPECT_EQ(Processed(forward, "The qufc", "\xA8\x26\xFD\x8C\xE5\x3B\x85\x5E"),
            "\0\0\0\0\0\0\0\1"s);
}

// Rivest's sequence, in which nearly every single fault of an implementation shows. Three equal
// keys act as single DES.
TEST(Des3, SixteenStepsOnTheirOwnResults) {
  std::string block = "\x94\x74\xB8\xE8\xC7\x3B\xCA\x7D";
  for (int i = 0; i < 16; ++i) block = Processed(Cipher(i % 2 == 0, block + block + block), block);
  EXPECT_EQ(block, "\x1B\x1A\x2D\xDB\x4C\x64\x24\x38");
}

// A textbook's example: the words behind the initial permutation, and those in front of the final
// one.
TEST(Des3, TheRoundsAlone) {
  const auto* const key =
      reinterpret_cast<const unsigned char*>("\x13\x34\x57\x79\x9B\xBC\xDF\xF1");
  unsigned schedule[32];
  unsigned left = 0xCC00CCFF, right = 0xF0AAF0AA;
  RawDES_UncheckedSetKey(true, key, schedule);
  RawDES_RawProcessBlock(schedule, left, right);
  EXPECT_EQ(left, 0x43423234u);
  EXPECT_EQ(right, 0x0A4CD995u);
  RawDES_UncheckedSetKey(false, key, schedule);
  RawDES_RawProcessBlock(schedule, right, left);
  EXPECT_EQ(left, 0xCC00CCFFu);
  EXPECT_EQ(right, 0xF0AAF0AAu);
}

// What an object leaves in its memory, besides zeros.
template <class T, class Use>
std::string LeftBehind(Use use) {
  alignas(T) char memory[sizeof(T)];
  T* const object = new (memory) T;
  use(*object);
  std::destroy_at(object);
  std::string left(memory, sizeof memory);
  std::erase(left, '\0');
  return left;
}

TEST(Wiping, ObjectsLeaveNothingBehind) {
  EXPECT_EQ(LeftBehind<CSha>([](CSha& sha) { Update(sha, "secret"); }), "");
  EXPECT_EQ(LeftBehind<CDes3>([](CDes3& cipher) { cipher = Cipher(true, kThreeKeys); }), "");
  CSha sha;
  Update(sha, "secret");
  ResultOf(sha);
  const std::string memory(reinterpret_cast<const char*>(&sha), sizeof sha);
  EXPECT_EQ(memory.find("secret"), std::string::npos);
}

std::string Digests(const std::string& source, std::size_t size) {
  std::string digests;
  for (std::size_t i = 0; i < size; i += 20) {
    CSha sha;
    Update(sha, {static_cast<char>(i / 256), static_cast<char>(i % 256)});
    Update(sha, source);
    digests.resize(i + 20);
    sha.Result(20, digests.data() + i);
  }
  return digests;
}

TEST(KeyDerivation, AHundredPassesOverAllDigests) {
  const struct {
    std::string pass;
    unsigned key, vector;
  } cases[] = {{"trig. station", 24, 8},
               {"", 24, 8},
               {"p", 0, 8},
               {"p", 20, 0},
               {"p", 0, 0},
               {std::string(300, 'x') + '\0', 200, 400}};
  for (const auto& test : cases) {
    const unsigned size = test.key + test.vector;
    std::string expected = test.pass;
    for (int pass = 0; pass < 100; ++pass) expected = Digests(expected, size);
    std::string key(test.key, '?'), vector(test.vector + 1, '?');
    GenerateKeyIVWithSHA(static_cast<unsigned>(test.pass.size()), test.pass.data(), test.key,
                         key.data(), test.vector, vector.data());
    EXPECT_EQ(key + vector, expected.substr(0, size) + '?') << test.pass << ' ' << size;
  }
}

}  // namespace
