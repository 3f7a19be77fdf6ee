// A row of a total station's export, taken apart and put together anew.
#include <kelp0lang/kelp0lang.h>

#include <cstdio>
#include <vector>

int main() {
  std::vector<kelp::WString> fields;
  ConvDelRow(KTEXT(";"), KTEXT("P9; 5049812,25 ;1512.5; \"Pilier nord, clé\""), true, fields);

  // A decimal comma reads as one; the accents of point names give way to their letters.
  const double north = DoubleDaString(fields[1]);
  std::printf("north %.2f, description '%s'\n", north, fields[3].ToUtf8().c_str());

  // A copy shares the text of the original until one of the two is written to.
  const kelp::WString next = IncrementaNuProg(fields[0].c_str(), false, 1);
  kelp::WString check = next;
  check += KTEXT("-bis");
  std::printf("%s is next, and then %s\n", next.ToUtf8().c_str(), check.ToUtf8().c_str());

  // Text for a file: the same under every locale of the process.
  kelp::CIOState state;
  state.SetPrecision(3);
  state.SetWidth(14);
  state.SetFill('.');
  const kelp::WString number = kelp::CWValueConverter::ToString(state, north);

  // A sentence whose parts a translator may put in another order.
  const kelp::WString sentence =
      kelp::FillTemplate(KTEXT("{2} is where {1} lies"), {fields[0], number});
  std::printf("%s\n", sentence.ToUtf8().c_str());
}
