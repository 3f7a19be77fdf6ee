// Digest, cipher and derivation beside OpenSSL, which knows the processor's SHA instructions too.
#include <openssl/evp.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>
#include <stdexcept>

#include "bench/BenchTable.h"
#include "kelp0lang/Des3.h"
#include "kelp0lang/KeyDerivation.h"
#include "kelp0lang/Sha.h"

namespace bench {
namespace {

using Bytes = std::vector<unsigned char>;
using DigestCall = void (*)(const unsigned char* data, std::size_t size, unsigned char* digest);

constexpr std::size_t kLarge = 64 << 20;
constexpr std::size_t kSmall = 64;
constexpr std::size_t kBlock = 8;
constexpr std::size_t kDigest = 20;
constexpr std::size_t kKey = 24;

std::shared_ptr<Bytes> RandomBytes(std::size_t size) {
  std::mt19937 random(45);
  const auto bytes = std::make_shared<Bytes>(size);
  for (unsigned char& byte : *bytes) byte = static_cast<unsigned char>(random());
  return bytes;
}

void OurDigest(const unsigned char* data, std::size_t size, unsigned char* digest) {
  CSha sha;
  sha.Update(static_cast<unsigned>(size), data);
  sha.Result(kDigest, digest);
}

// In its fastest form: the algorithm is looked up once, and the context is used again.
class PeerSha {
 public:
  void Update(const void* data, std::size_t size) { EVP_DigestUpdate(m_context.get(), data, size); }
  // Gives the digest and starts the next message.
  void Result(unsigned char* digest) {
    EVP_DigestFinal_ex(m_context.get(), digest, nullptr);
    Start();
  }
  PeerSha() { Start(); }

 private:
  void Start() { EVP_DigestInit_ex(m_context.get(), m_algorithm.get(), nullptr); }
  struct Free {
    void operator()(EVP_MD* algorithm) const { EVP_MD_free(algorithm); }
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
  };
  std::unique_ptr<EVP_MD, Free> m_algorithm{EVP_MD_fetch(nullptr, "SHA1", nullptr)};
  std::unique_ptr<EVP_MD_CTX, Free> m_context{EVP_MD_CTX_new()};
};

void PeerDigest(const unsigned char* data, std::size_t size, unsigned char* digest) {
  static PeerSha sha;
  sha.Update(data, size);
  sha.Result(digest);
}

// In one call, as ours is.
void PeerDigestOfOneCall(const unsigned char* data, std::size_t size, unsigned char* digest) {
  EVP_Digest(data, size, digest, nullptr, EVP_sha1(), nullptr);
}

// An item is a message.
Measure OverMessages(const std::shared_ptr<Bytes>& bytes, std::size_t size, DigestCall call) {
  return [=](benchmark::State& state) {
    unsigned char digest[kDigest];
    for (auto _ : state) {
      for (std::size_t i = 0; i < bytes->size(); i += size) {
        call(bytes->data() + i, size, digest);
        benchmark::DoNotOptimize(digest);
      }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(bytes->size() / size));
  };
}

void OurCipher(const Bytes& in, const unsigned char* key, Bytes& out) {
  CDes3 cipher;
  cipher.SetKey(true, kKey, key);
  for (std::size_t i = 0; i < in.size(); i += kBlock) {
    cipher.ProcessBlock(in.data() + i, nullptr, out.data() + i);
  }
}

void PeerCipher(const Bytes& in, const unsigned char* key, Bytes& out) {
  const std::unique_ptr<EVP_CIPHER_CTX, void (*)(EVP_CIPHER_CTX*)> context(EVP_CIPHER_CTX_new(),
                                                                           &EVP_CIPHER_CTX_free);
  EVP_EncryptInit_ex(context.get(), EVP_des_ede3_ecb(), nullptr, key, nullptr);
  EVP_CIPHER_CTX_set_padding(context.get(), 0);
  int written = 0;
  EVP_EncryptUpdate(context.get(), out.data(), &written, in.data(), static_cast<int>(in.size()));
}

// An item is a block.
Measure OverBlocks(const std::shared_ptr<Bytes>& bytes,
                   void (*call)(const Bytes&, const unsigned char*, Bytes&)) {
  return [=](benchmark::State& state) {
    Bytes out(bytes->size());
    for (auto _ : state) {
      call(*bytes, bytes->data(), out);
      benchmark::DoNotOptimize(out.data());
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(bytes->size() / kBlock));
  };
}

// A key of 24 and a vector of 8 bytes, one behind the other.
struct KeyAndVector {
  unsigned char bytes[kKey + kBlock];
};

KeyAndVector OurKey(const std::string& pass) {
  KeyAndVector made;
  GenerateKeyIVWithSHA(static_cast<unsigned>(pass.size()), pass.data(), kKey, made.bytes, kBlock,
                       made.bytes + kKey);
  return made;
}

KeyAndVector PeerKey(const std::string& pass) {
  static PeerSha sha;
  unsigned char source[2 * kDigest], target[2 * kDigest];
  for (int i = 0; i < 100; ++i) {
    for (unsigned char offset : {0, 20}) {
      const unsigned char prefix[] = {0, offset};
      sha.Update(prefix, sizeof prefix);
      if (i == 0) {
        sha.Update(pass.data(), pass.size());
      } else {
        sha.Update(source, sizeof source);
      }
      sha.Result(target + offset);
    }
    std::memcpy(source, target, sizeof source);
  }
  KeyAndVector made;
  std::memcpy(made.bytes, source, sizeof made.bytes);
  return made;
}

void CheckThatBothAgree(const Bytes& bytes, const std::string& pass) {
  unsigned char ours[kDigest], theirs[kDigest];
  OurDigest(bytes.data(), bytes.size(), ours);
  PeerDigest(bytes.data(), bytes.size(), theirs);
  Bytes ourBlocks(bytes.size()), theirBlocks(bytes.size());
  OurCipher(bytes, bytes.data(), ourBlocks);
  PeerCipher(bytes, bytes.data(), theirBlocks);
  const KeyAndVector ourKey = OurKey(pass), theirKey = PeerKey(pass);
  if (!std::ranges::equal(ours, theirs) || ourBlocks != theirBlocks ||
      !std::ranges::equal(ourKey.bytes, theirKey.bytes)) {
    throw std::runtime_error("the two sides differ");
  }
}

}  // namespace

void AddDigestWorks() {
  const auto large = RandomBytes(kLarge);
  const auto small = RandomBytes(1'000'000 * kSmall);
  const std::vector<std::string> passes = {"trig. station",
                                           "a longer pass phrase, of 41 characters..", "p"};
  for (const std::string& pass : passes) CheckThatBothAgree(*small, pass);
  Compare("SHA-1 of 64 MB", OverMessages(large, kLarge, &OurDigest),
          {{"OpenSSL", 1.1, OverMessages(large, kLarge, &PeerDigest)}});
  Compare("SHA-1 of 64 bytes, a million", OverMessages(small, kSmall, &OurDigest),
          {{"OpenSSL", 0.5, OverMessages(small, kSmall, &PeerDigestOfOneCall)},
           {"OpenSSL, context kept", 0.5, OverMessages(small, kSmall, &PeerDigest)}});
  Compare("triple DES of 64 MB, a block", OverBlocks(large, &OurCipher),
          {{"OpenSSL", 1.1, OverBlocks(large, &PeerCipher)}});
  Compare("key and vector from a phrase", Over(passes, &OurKey),
          {{"OpenSSL", 1.0, Over(passes, &PeerKey)}});
}

}  // namespace bench
