#include "kelp0lang/KeyDerivation.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <memory>

#include "kelp0lang/Sha.h"
#include "kelp0lang/Wipe.h"

namespace {

constexpr int kPasses = 100;

// Bytes that are wiped at their end.
class SecretBytes {
 public:
  explicit SecretBytes(std::size_t size)
      : m_size(size), m_bytes(std::make_unique_for_overwrite<unsigned char[]>(size)) {}
  SecretBytes(const SecretBytes&) = delete;
  SecretBytes& operator=(const SecretBytes&) = delete;
  ~SecretBytes() { kelp::detail::Wipe(m_bytes.get(), m_size); }

  std::size_t Size() const noexcept { return m_size; }
  unsigned char* Data() noexcept { return m_bytes.get(); }

 private:
  std::size_t m_size;
  std::unique_ptr<unsigned char[]> m_bytes;
};

// A source may be longer than one update takes.
void Update(CSha& sha, std::size_t size, const unsigned char* data) {
  constexpr std::size_t kMost = std::numeric_limits<unsigned>::max();
  for (std::size_t taken = 0; size > 0; size -= taken, data += taken) {
    taken = std::min(size, kMost);
    sha.Update(static_cast<unsigned>(taken), data);
  }
}

// Fills the target with the digests of the source, each behind its own offset in the target.
void Pass(const unsigned char* source, std::size_t size, SecretBytes& target) {
  CSha sha;
  for (std::size_t offset = 0; offset < target.Size(); offset += CSha::GetDigestSize()) {
    const unsigned char prefix[] = {static_cast<unsigned char>(offset >> 8),
                                    static_cast<unsigned char>(offset)};
    sha.Update(sizeof prefix, prefix);
    Update(sha, size, source);
    sha.Result(CSha::GetDigestSize(), target.Data() + offset);
  }
}

}  // namespace

void GenerateKeyIVWithSHA(unsigned passLength, const void* pass, unsigned keyLength, void* key,
                          unsigned ivLength, void* iv) {
  constexpr std::size_t kDigest = 20;
  const std::size_t wanted = std::size_t{keyLength} + ivLength;
  const std::size_t whole = (wanted + kDigest - 1) / kDigest * kDigest;
  SecretBytes first(whole);
  SecretBytes second(whole);
  Pass(static_cast<const unsigned char*>(pass), passLength, first);
  SecretBytes* made = &first;
  SecretBytes* next = &second;
  for (int pass = 1; pass < kPasses; ++pass) {
    Pass(made->Data(), whole, *next);
    std::swap(made, next);
  }
  std::copy_n(made->Data(), keyLength, static_cast<unsigned char*>(key));
  std::copy_n(made->Data() + keyLength, ivLength, static_cast<unsigned char*>(iv));
}
