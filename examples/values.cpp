// Points in a binary file, each with a value of any kind beside it.
#include <kelp0lang/kelp0lang.h>

#include <cstdio>

int main() {
  const kelp::CFile file = kelp::CFile::CreateTempFile(nullptr, KTEXT("points"), KTEXT(".bin"));
  const WChar* const path = file.GetPath().c_str();

  kelp::CPolyValue codes;
  codes.CreateArray(kelp::pvString, 0);
  codes.AppendStringValue(KTEXT("pillar"));
  codes.AppendStringValue(KTEXT("built 1881"));

  kelp::ofpstream out(path, 1, KTEXT("points"), 0, kelp::kWriteBinary);
  out << 2;
  out << kelp::WString(KTEXT("T1")) << 512.25;
  kelp::SaveToFile(out, codes, 0);
  out << kelp::WString(KTEXT("T2")) << 498.5;
  kelp::SaveToFile(out, kelp::CPolyValue(2.75), 0);
  out.Close();

  // The reader repeats the order of the writer. A stream that has failed reads nothing more, so it
  // is enough to look at its state once.
  kelp::ifpstream in(path, kelp::kReadBinary);
  int count = 0;
  in >> count;
  for (int i = 0; i < count && in.GetState() == kelp::kStreamGood; ++i) {
    kelp::WString name;
    double height = 0;
    kelp::CPolyValue value;
    in >> name >> height;
    kelp::LoadFromFile(in, value);
    std::printf("%s %.2f:", name.ToUtf8().c_str(), height);
    for (unsigned element = 0; element < value.GetNoArrayElements(); ++element) {
      std::printf(" '%s'", value.GetStringValue(element).ToUtf8().c_str());
    }
    // A value answers in whatever form it is asked for.
    if (value.GetType() == kelp::pvDouble) std::printf(", or %d", value.GetInt32Value());
    std::printf("\n");
  }
  in.Close();
  std::printf("state %d\n", in.GetState());
  file.Delete();
}
