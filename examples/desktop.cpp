// Texts in the user's language, out of a catalogue as translators write it.
#include <kelp0lang/kelp0lang.h>

#include <cstdio>

namespace {

void Print(const kelp::WString& text) {
  std::printf("%s\n", text.ToUtf8().c_str());
}

// A file of its own; with a program it comes with the set-up.
kelp::CFile WriteCatalogue() {
  const kelp::CFile file = kelp::CFile::CreateTempFile(nullptr, KTEXT("it"), KTEXT(".po"));
  std::FILE* const out = _wfopen(file.GetPath().c_str(), KTEXT("wb"));
  std::fputs(
      "msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=UTF-8\\n\"\n"
      "msgid \"Point\"\nmsgstr \"Punto\"\n"
      "msgid \"E@@East (1 char)\"\nmsgstr \"E\"\n"
      "msgid \"W@@West (1 char)\"\nmsgstr \"O\"\n"
      "msgid \"{1} points in {2}\"\nmsgstr \"in {2}: {1} punti\"\n",
      out);
  std::fclose(out);
  return file;
}

void ShowTexts() {
  Print(kelp::Xlate(KXLATE("Point")));
  Print(kelp::Xlate(KXLATE("W@@West (1 char)")));  // the note behind "@@" is for the translator
  Print(
      kelp::XlateFilled(KXLATE("{1} points in {2}"), {kelp::WString::ValueOf(42), KTEXT("a.csv")}));
}

}  // namespace

int main() {
  ShowTexts();
  const kelp::CFile catalogue = WriteCatalogue();
  if (!kelp::LoadTranslateFile(catalogue.GetPath())) Print(kelp::GetTranslateFileError());
  ShowTexts();
  // Longitudes have the user's letter too.
  Print(DegToDMS(-70.25, enumDisplayAngleUnits::DMSSymbols, enumLatLonType::Longitude, 0));
  catalogue.Delete();

  kelp::WString name;
  if (kelp::getCultureNameByCode(0x0410, name)) {
    const int row = kelp::findCultureIndexByName(name);
    kelp::WString language, country, native;
    kelp::getCultureDisplayName(row, language, native, country);
    Print(name + KTEXT(": ") +
          (language + KTEXT(", ")).Concat(country + KTEXT(", ")).Concat(native).c_str());
  }
}
