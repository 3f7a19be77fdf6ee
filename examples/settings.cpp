// The settings of a program, in a folder that it has set up for itself.
#include <kelp0lang/kelp0lang.h>

#include <cstdio>

int main() {
  // A program names a folder of the system here, CSIDL_APPDATA and the product's name; -1 takes the
  // folder as it stands.
  const kelp::CFile place = kelp::CFile(KTEXT("product")).GetAbsoluteFile();
  kelp::FInitializeSpecialFolder(nullptr, -1, place.GetPath().c_str(), nullptr);
  CheckSeDirExist(kelp::GetProgramDataSupportFolderPath(kelp::WString()));

  const CIniFile settings(KTEXT("Survey"));
  settings.WriteDouble(KTEXT("Draw"), KTEXT("Scale"), 0.5);
  settings.WriteColor(KTEXT("Draw"), KTEXT("Contour"), 0x0040FF);
  settings.WriteString(KTEXT("Draw"), KTEXT("Style"), KTEXT("dashed"));

  const kelp::CFile file(settings.GetIniFilePath());
  std::printf("%s, %s\n", file.GetName().ToUtf8().c_str(), file.CanWrite() ? "written" : "missing");
  std::printf("scale %.2f, contour %06lX, style %s, grid %s\n",
              settings.GetDouble(KTEXT("Draw"), KTEXT("Scale"), 1.0),
              settings.GetColor(KTEXT("Draw"), KTEXT("Contour"), 0, 0, 0),
              settings.GetString(KTEXT("Draw"), KTEXT("Style"), KTEXT("plain")).ToUtf8().c_str(),
              settings.GetBool(KTEXT("Draw"), KTEXT("Grid"), true) ? "on" : "off");

  // What is in the folder; the order is the system's.
  for (const kelp::CFile& entry : kelp::CFile(place, KTEXT("*.ket")).ListFiles()) {
    std::printf("found %s\n", entry.GetNameWithoutExt().ToUtf8().c_str());
    entry.Delete();
  }
}
