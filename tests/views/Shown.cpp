// Values for a debugger to stop at.
#include <kelp0lang/kelp0lang.h>

#include <string_view>

namespace {

[[gnu::noinline]] void Stop(const void*) {
  asm volatile("");
}

}  // namespace

int main() {
  const kelp::String narrow(std::string_view("P\0\xC3\xA8", 4));
  const kelp::WString wide(KTEXT("Val d\x2019Is\x00E8re \xD83D\xDE00"));
  const kelp::WString nothing;
  const kelp::CPolyValue values[] = {kelp::CPolyValue(), 7, 2.5, true, wide};
  const kelp::CFile file(KTEXT("C:\\jobs\\survey.dat"));
  CMeasUnitSystem units;
  units.SetNumAngleDec(6);
  Stop(&values);
  return narrow.empty() || file.GetPath().empty();
}
