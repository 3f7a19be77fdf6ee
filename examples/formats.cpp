// The bytes of a binary file with one number, one text and one value.
#include <kelp0lang/kelp0lang.h>

#include <cstdio>

int main() {
  const kelp::CFile file = kelp::CFile::CreateTempFile(nullptr, KTEXT("bytes"), KTEXT(".bin"));
  kelp::ofpstream out(file.GetPath().c_str(), 1, KTEXT("bytes"), 0, kelp::kWriteBinary);
  out << 300 << kelp::WString(KTEXT("P1"));
  kelp::SaveToFile(out, kelp::CPolyValue(true), 0);
  out.Close();

  {
    const CMemoryMappedFile bytes(file.GetPath().c_str(), false, false, 0);
    for (unsigned long i = 0; i < bytes.getLength(); ++i) {
      if (i != 0) std::printf(i % 8 == 0 ? "\n" : " ");
      std::printf("%02X", static_cast<unsigned char>(bytes.getData()[i]));
    }
    std::printf("\n%lu bytes\n", bytes.getLength());
  }
  file.Delete();
}
