// Bit streams beside what one writes by hand.
#include <memory>
#include <random>
#include <stdexcept>

#include "bench/BenchTable.h"
#include "bench/BitsByHand.h"
#include "kelp0lang/BitStream.h"

namespace bench {
namespace {

using Bytes = std::vector<unsigned char>;

// Flags, codes and counts of a record, as they come.
std::vector<BitField> MixedFields() {
  constexpr int kBits[] = {1, 1, 3, 4, 7, 8, 12, 16, 20, 32};
  std::mt19937 random(44);
  std::vector<BitField> fields(1'000'000);
  for (BitField& field : fields) {
    field.bits = kBits[random() % std::size(kBits)];
    field.value = static_cast<std::uint32_t>(random() & ((std::uint64_t{1} << field.bits) - 1));
  }
  return fields;
}

kelp::CBitStreamWriter Pack(const std::vector<BitField>& fields) {
  kelp::CBitStreamWriter out;
  for (const BitField& field : fields) {
    if (field.bits == 1) {
      out.WriteBit(static_cast<unsigned char>(field.value));
    } else {
      out.WriteInt(field.value, field.bits);
    }
  }
  return out;
}

std::uint64_t Sum(const Bytes& bytes, const std::vector<BitField>& fields) {
  kelp::CBitStreamReader in(static_cast<unsigned>(bytes.size()), bytes.data());
  std::uint64_t sum = 0;
  for (const BitField& field : fields) {
    sum += field.bits == 1 ? static_cast<unsigned>(in.ReadBit()) : in.ReadInt(field.bits);
  }
  return sum;
}

// Measures a call over all fields; an item is a field.
template <class Call>
Measure OverFields(const std::shared_ptr<std::vector<BitField>>& fields, Call call) {
  return [=](benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(call(*fields));
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(fields->size()));
  };
}

// Both sides make the same bytes, and read the same values out of them.
Bytes CheckedBytes(const std::vector<BitField>& fields) {
  const Bytes bytes = PackByHand(fields);
  const kelp::CBitStreamWriter ours = Pack(fields);
  const unsigned char* const address = ours.GetBufferAddress();
  if (Bytes(address, address + ours.GetBufferSize()) != bytes ||
      Sum(bytes, fields) != SumByHand(bytes.data(), fields)) {
    throw std::runtime_error("the two sides differ");
  }
  return bytes;
}

constexpr int kRun = 4096;
constexpr int kRuns = 16;

// Runs one behind the other, at a bit position.
Measure ReadRuns(const std::shared_ptr<Bytes>& bytes, int start) {
  return [=](benchmark::State& state) {
    unsigned char run[kRun];
    for (auto _ : state) {
      kelp::CBitStreamReader in(static_cast<unsigned>(bytes->size()), bytes->data());
      in.SkipBits(start);
      for (int i = 0; i < kRuns; ++i) {
        in.ReadBytes(kRun, run);
        benchmark::DoNotOptimize(run);
        benchmark::ClobberMemory();
      }
    }
    state.SetItemsProcessed(state.iterations() * kRuns);
  };
}

Measure ReadRunsByHand(const std::shared_ptr<Bytes>& bytes,
                       void (*read)(const unsigned char*, unsigned char*, std::size_t)) {
  return [=](benchmark::State& state) {
    unsigned char run[kRun];
    for (auto _ : state) {
      for (int i = 0; i < kRuns; ++i) {
        read(bytes->data() + i * kRun, run, kRun);
        benchmark::DoNotOptimize(run);
        benchmark::ClobberMemory();
      }
    }
    state.SetItemsProcessed(state.iterations() * kRuns);
  };
}

Measure WriteRuns(const std::shared_ptr<Bytes>& bytes, int start) {
  return [=](benchmark::State& state) {
    for (auto _ : state) {
      kelp::CBitStreamWriter out;
      out.WriteInt(5, start);
      for (int i = 0; i < kRuns; ++i) out.WriteBytes(bytes->data() + i * kRun, kRun);
      benchmark::DoNotOptimize(out.GetBufferAddress());
    }
    state.SetItemsProcessed(state.iterations() * kRuns);
  };
}

// Into an array that grows as the writer's does.
Measure WriteRunsByHand(const std::shared_ptr<Bytes>& bytes,
                        void (*write)(const unsigned char*, std::size_t, unsigned char*)) {
  return [=](benchmark::State& state) {
    for (auto _ : state) {
      Bytes out(1, 0xA0);
      for (int i = 0; i < kRuns; ++i) {
        const std::size_t last = out.size() - 1;
        out.resize(out.size() + kRun);
        write(bytes->data() + i * kRun, kRun, out.data() + last);
      }
      benchmark::DoNotOptimize(out.data());
    }
    state.SetItemsProcessed(state.iterations() * kRuns);
  };
}

void CopyInto(const unsigned char* run, std::size_t size, unsigned char* target) {
  CopyRunByHand(run, target, size);
}

}  // namespace

void AddBitWorks() {
  const auto fields = std::make_shared<std::vector<BitField>>(MixedFields());
  const Bytes packed = CheckedBytes(*fields);
  Compare("write mixed bit fields", OverFields(fields, Pack),
          {{"shift loop", 1.5, OverFields(fields, PackByHand)}});
  Compare("read mixed bit fields",
          OverFields(fields, [packed](const auto& all) { return Sum(packed, all); }),
          {{"shift loop", 1.5, OverFields(fields, [packed](const auto& all) {
              return SumByHand(packed.data(), all);
            })}});

  std::mt19937 random(45);
  const auto bytes = std::make_shared<Bytes>(kRun * kRuns + 1);
  for (unsigned char& byte : *bytes) byte = static_cast<unsigned char>(random());
  Compare("read byte runs, bit 0", ReadRuns(bytes, 0),
          {{"memcpy", 1.2, ReadRunsByHand(bytes, CopyRunByHand)}});
  Compare("read byte runs, bit 3", ReadRuns(bytes, 3),
          {{"shift by words", 1.2, ReadRunsByHand(bytes, ReadRunByHand)}});
  Compare("write byte runs, bit 0", WriteRuns(bytes, 0),
          {{"memcpy", 1.2, WriteRunsByHand(bytes, CopyInto)}});
  Compare("write byte runs, bit 3", WriteRuns(bytes, 3),
          {{"shift by words", 1.2, WriteRunsByHand(bytes, WriteRunByHand)}});
}

}  // namespace bench
