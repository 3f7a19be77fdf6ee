// The paper of the user's default printer: its format and orientation, read, changed and put back.
//
//   CPrinterPageSetter& page = CPrinterPageSetter::GetInstance();
//   if (page.SetPaperSizeAndOrientation(8, true) != 0) plot();  // on A3, landscape
//
// A format is one of the system's numbers of papers, 1 to 118, or one of two large ones of this
// library: 260, 840 by 1180 mm, and 261, 594 by 840 mm. Nothing is shown to the user.
//
// Threads: one at a time, and the settings are the user's, not the program's: who sets them last is
// right.
#pragma once

#include "kelp0lang/Export.h"
#include "kelp0lang/Singleton.h"

// Width and height of a format, tenths of a millimetre, swapped for landscape. 0 and 0 for a format
// that isn't one, and for those without a fixed size.
KELP0LANG_API void GetSizeOfPageFormat(short format, bool landscape, int& width, int& height);
// The lowest format of the system's of this size, tenths of a millimetre. A format that lies on its
// side, or is square, is landscape. Without one false, format -2 and no landscape.
KELP0LANG_API bool GetPageFormatAndOrientationFromSize(int width, int height, short& format,
                                                       bool& landscape);

// What the default printer is set to. Where that can't be read the format is -1, and landscape
// stays as it was.
KELP0LANG_API void GetPaperSizeAndOrientation(short& format, bool& landscape);
// Sets the format and then the orientation; the second is tried whether or not the first was taken.
// 0 where there is no default printer, or it refuses one of them.
KELP0LANG_API int SetPaperSizeAndOrientation(short format, bool landscape);

// Remembers what the default printer is set to when it is made, and puts that back when it goes,
// with the other singletons.
class KELP0LANG_API CPrinterPageSetter : private kelp::ISingleton {
 public:
  static CPrinterPageSetter& GetInstance();

  // As the function of this name.
  int SetPaperSizeAndOrientation(short format, bool landscape);

 private:
  CPrinterPageSetter();
  ~CPrinterPageSetter() override;

  short m_format = -1;
  bool m_landscape = false;
};
