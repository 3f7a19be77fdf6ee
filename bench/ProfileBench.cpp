// Settings files beside QSettings, and a durable write beside the C library with as many bytes.
#include <fcntl.h>
#include <unistd.h>

#include <QSettings>
#include <QString>
#include <QStringList>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "bench/BenchTable.h"
#include "kelp0lang/IniFile.h"

namespace bench {
namespace {

constexpr int kSections = 100;
constexpr int kKeys = 100;
// More than either side keeps in memory, so that each round loads its file.
constexpr int kCopies = 40;

std::string Content() {
  std::string text;
  for (int s = 0; s < kSections; ++s) {
    text += "[section" + std::to_string(s) + "]\r\n";
    for (int k = 0; k < kKeys; ++k) {
      text += "key" + std::to_string(k) + "=value " + std::to_string(s * kKeys + k) + "\r\n";
    }
  }
  return text;
}

void WriteCopies(const std::filesystem::path& folder) {
  const std::string text = Content();
  std::string wide = "\xFF\xFE";
  for (const char byte : text) (wide += byte) += '\0';
  for (int i = 0; i < kCopies; ++i) {
    std::ofstream(folder / ("ours" + std::to_string(i) + ".ket"), std::ios::binary) << wide;
    std::ofstream(folder / ("qt" + std::to_string(i) + ".ini"), std::ios::binary) << text;
  }
  // A file that has just been written is read again by each call.
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
}

std::vector<kelp::WString> OurNames(const char16_t* prefix, int count) {
  std::vector<kelp::WString> names;
  for (int i = 0; i < count; ++i) {
    names.push_back(kelp::WString(prefix).Concat(kelp::WString::ValueOf(i)));
  }
  return names;
}

Measure LoadOurs(const std::filesystem::path& folder) {
  return [=](benchmark::State& state) {
    const auto sections = OurNames(u"section", kSections);
    const auto keys = OurNames(u"key", kKeys);
    int round = 0;
    for (auto _ : state) {
      const auto name = folder / ("ours" + std::to_string(round++ % kCopies) + ".ket");
      const CIniFile file(name.u16string().c_str());
      for (const auto& section : sections) {
        for (const auto& key : keys) {
          const kelp::WString value = file.GetKelpString(section.c_str(), key.c_str(), u"");
          if (value.empty()) return state.SkipWithError("a key is missing");
          benchmark::DoNotOptimize(value);
        }
      }
    }
    state.SetItemsProcessed(state.iterations() * kSections * kKeys);
  };
}

Measure LoadQt(const std::filesystem::path& folder) {
  return [=](benchmark::State& state) {
    std::vector<QString> names;
    for (int s = 0; s < kSections; ++s) {
      for (int k = 0; k < kKeys; ++k) names.push_back(QString("section%1/key%2").arg(s).arg(k));
    }
    int round = 0;
    for (auto _ : state) {
      const auto name = folder / ("qt" + std::to_string(round++ % kCopies) + ".ini");
      const QSettings file(QString::fromStdString(name.string()), QSettings::IniFormat);
      for (const QString& key : names) {
        const QString value = file.value(key).toString();
        if (value.isEmpty()) return state.SkipWithError("a key is missing");
        benchmark::DoNotOptimize(value);
      }
    }
    state.SetItemsProcessed(state.iterations() * kSections * kKeys);
  };
}

bool WriteByHand(const std::string& path, const std::string& bytes) {
  const std::string written = path + ".new";
  std::FILE* const file = std::fopen(written.c_str(), "wb");
  if (file == nullptr) return false;
  const bool good = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size() &&
                    std::fflush(file) == 0 && fsync(fileno(file)) == 0;
  return std::fclose(file) == 0 && good && std::rename(written.c_str(), path.c_str()) == 0;
}

}  // namespace

void AddProfileWorks(const std::filesystem::path& folder) {
  WriteCopies(folder);
  Compare("load settings, a key", LoadOurs(folder), {{"QSettings", 1.0, LoadQt(folder)}});

  const auto writeOurs = [=](benchmark::State& state) {
    const CIniFile file((folder / "ours0.ket").u16string().c_str());
    long value = 1000;
    for (auto _ : state) {
      if (!file.WriteLong(u"section50", u"key50", ++value)) state.SkipWithError("not written");
    }
    state.SetItemsProcessed(state.iterations());
  };
  const auto writeByHand = [=](benchmark::State& state) {
    const std::string bytes(2 * Content().size() + 2, 'x');
    const std::string path = (folder / "by_hand.ket").string();
    for (auto _ : state) {
      if (!WriteByHand(path, bytes)) state.SkipWithError("not written");
    }
    state.SetItemsProcessed(state.iterations());
  };
  Compare("write a setting, durable", writeOurs, {{"stdio, fsync, rename", 1.3, writeByHand}},
          Clock::kWall);
}

}  // namespace bench
