#include "kelp0lang/PrinterPage.h"

#include <windows.h>
// It needs the one before.
#include <winspool.h>

#include <memory>
#include <utility>

#include "kelptext/WideChar.h"

namespace {

constexpr short kFirstLarge = 260;  // of this library's own formats
constexpr short kSecondLarge = 261;
constexpr short kFirstCustom = 256;  // numbers from here on aren't the system's
constexpr short kA4 = 9;

struct Size {
  unsigned short width;
  unsigned short height;
};
// The system's papers from 1 on, upright, in tenths of a millimetre; {} has no fixed size.
constexpr Size kSizes[] = {
    {2159, 2794}, {2159, 2794}, {2794, 4318}, {4318, 2794}, {2159, 3556}, {1397, 2159},
    {1842, 2667}, {2970, 4200}, {2100, 2970}, {2100, 2970}, {1480, 2100}, {2500, 3540},
    {1820, 2570}, {2159, 3300}, {2150, 2750}, {2540, 3556}, {2790, 4318}, {2159, 2794},
    {984, 2254},  {1045, 2413}, {1143, 2635}, {1016, 2794}, {127, 2921},  {},
    {},           {},           {1100, 2200}, {1620, 2290}, {3240, 4580}, {2290, 3240},
    {1140, 1620}, {1140, 2290}, {2500, 3530}, {1760, 2500}, {1760, 1250}, {1100, 2300},
    {984, 1905},  {921, 1651},  {3778, 2794}, {2159, 3048}, {2159, 3302}, {2500, 3530},
    {1000, 1480}, {2284, 2794}, {2504, 2794}, {3810, 2794}, {2200, 2200}, {},
    {},           {2413, 3048}, {2413, 3810}, {2969, 4572}, {2355, 3223}, {2195, 2794},
    {2100, 2970}, {0, 3048},    {2270, 3560}, {3050, 4780}, {2159, 3223}, {2100, 3300},
    {1480, 2100}, {1820, 2570}, {3220, 4450}, {1740, 2350}, {2010, 2760}, {4200, 5940},
    {2970, 4200}, {3220, 4450}, {2000, 1480}, {1050, 1480}, {2400, 3320}, {2160, 2770},
    {900, 2050},  {1200, 2350}, {2159, 2159}, {2970, 2970}, {2970, 2100}, {2100, 1480},
    {3640, 2570}, {2570, 1820}, {1480, 1000}, {1480, 2000}, {1480, 1050}, {3320, 2400},
    {2770, 2160}, {2050, 900},  {2350, 1200}, {1280, 1820}, {1820, 1280}, {3048, 2794},
    {1050, 2350}, {2350, 1050}, {1460, 2150}, {970, 1510},  {970, 1510},  {1020, 1650},
    {1020, 1760}, {1250, 1760}, {1100, 2080}, {1100, 2200}, {1200, 2300}, {1600, 2300},
    {1200, 3090}, {2290, 3240}, {3240, 4580}, {2150, 1460}, {1510, 970},  {1510, 970},
    {1650, 1020}, {1760, 1020}, {1760, 1250}, {2080, 1100}, {2200, 1100}, {2300, 1200},
    {2300, 1600}, {3090, 1200}, {3240, 2290}, {4580, 3240},
};
constexpr short kFormats = static_cast<short>(sizeof kSizes / sizeof kSizes[0]);

Size SizeOf(short format) {
  if (format == kFirstLarge) return {8400, 11800};
  if (format == kSecondLarge) return {5940, 8400};
  if (format < 1 || format > kFormats) return {};
  return kSizes[format - 1];
}

// A library of the system's for a scope.
class Library {
 public:
  explicit Library(const WChar* name) : m_module(LoadLibraryW(name)) {}
  ~Library() {
    if (m_module != nullptr) FreeLibrary(m_module);
  }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  template <class Function>
  bool Bind(const char* name, Function*& function) const {
    if (m_module == nullptr) return false;
    function = reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(m_module, name)));
    return function != nullptr;
  }

 private:
  const HMODULE m_module;
};

// The spooler's functions, bound for one pass: a system may have no spooler.
struct Spooler {
  const Library library{KTEXT("Winspool.drv")};
  decltype(&::GetDefaultPrinterW) getDefault = nullptr;
  decltype(&::OpenPrinterW) open = nullptr;
  decltype(&::GetPrinterW) get = nullptr;
  decltype(&::SetPrinterW) set = nullptr;
  decltype(&::DocumentPropertiesW) properties = nullptr;
  decltype(&::ClosePrinter) close = nullptr;

  bool Bind() {
    return library.Bind("GetDefaultPrinterW", getDefault) && library.Bind("OpenPrinterW", open) &&
           library.Bind("GetPrinterW", get) && library.Bind("SetPrinterW", set) &&
           library.Bind("DocumentPropertiesW", properties) && library.Bind("ClosePrinter", close);
  }
};

template <class T>
struct GlobalDeleter {
  void operator()(T* memory) const { GlobalFree(memory); }
};
template <class T>
using GlobalPointer = std::unique_ptr<T, GlobalDeleter<T>>;

template <class T>
GlobalPointer<T> AllocateGlobal(std::size_t size) {
  return GlobalPointer<T>(static_cast<T*>(GlobalAlloc(GPTR, size)));
}

// The default printer, open with its record and device mode.
class DefaultPrinter {
 public:
  DefaultPrinter() = default;
  ~DefaultPrinter() {
    m_info.reset();
    if (m_printer != nullptr) m_spooler.close(m_printer);
  }
  DefaultPrinter(const DefaultPrinter&) = delete;
  DefaultPrinter& operator=(const DefaultPrinter&) = delete;

  // False where there is none, or one that knows nothing of orientation.
  bool Open() {
    return m_spooler.Bind() && ReadName() && OpenByName() && ReadInfo() && RequireMode() &&
           (Mode().dmFields & DM_ORIENTATION) != 0;
  }
  DEVMODEW& Mode() { return *m_info->pDevMode; }
  // Has the driver take the changed device mode, makes it the printer's, and tells all windows.
  bool Apply() {
    m_info->pSecurityDescriptor = nullptr;
    DEVMODEW* const mode = m_info->pDevMode;
    if (m_spooler.properties(nullptr, m_printer, m_name.get(), mode, mode,
                             DM_IN_BUFFER | DM_OUT_BUFFER) != IDOK) {
      return false;
    }
    m_spooler.set(m_printer, 2, reinterpret_cast<BYTE*>(m_info.get()), 0);
    TellWindows();
    return true;
  }

 private:
  bool ReadName() {
    DWORD size = 0;
    m_spooler.getDefault(nullptr, &size);
    if (size == 0) return false;
    m_name = std::make_unique<WChar[]>(size);
    return m_spooler.getDefault(m_name.get(), &size) != FALSE;
  }
  bool OpenByName() {
    PRINTER_DEFAULTSW defaults = {nullptr, nullptr, PRINTER_ACCESS_USE};
    return m_spooler.open(m_name.get(), &m_printer, &defaults) != FALSE;
  }
  bool ReadInfo() {
    DWORD size = 0;
    SetLastError(0);
    if (!m_spooler.get(m_printer, 2, nullptr, 0, &size) &&
        GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
      return false;
    }
    m_info = AllocateGlobal<PRINTER_INFO_2W>(size);
    return m_info != nullptr &&
           m_spooler.get(m_printer, 2, reinterpret_cast<BYTE*>(m_info.get()), size, &size);
  }
  bool RequireMode() {
    if (m_info->pDevMode != nullptr) return true;
    const LONG size = m_spooler.properties(nullptr, m_printer, m_name.get(), nullptr, nullptr, 0);
    if (size <= 0) return false;
    m_mode = AllocateGlobal<DEVMODEW>(static_cast<std::size_t>(size));
    if (m_mode == nullptr || m_spooler.properties(nullptr, m_printer, m_name.get(), m_mode.get(),
                                                  nullptr, DM_OUT_BUFFER) != IDOK) {
      return false;
    }
    m_info->pDevMode = m_mode.get();
    return true;
  }
  void TellWindows() const {
    constexpr UINT kTime = 1000;  // milliseconds
    const Library library(KTEXT("User32.dll"));
    decltype(&::SendMessageTimeoutW) send = nullptr;
    if (!library.Bind("SendMessageTimeoutW", send)) return;
    send(HWND_BROADCAST, WM_DEVMODECHANGE, 0, reinterpret_cast<LPARAM>(m_name.get()), SMTO_NORMAL,
         kTime, nullptr);
  }

  Spooler m_spooler;
  std::unique_ptr<WChar[]> m_name;
  HANDLE m_printer = nullptr;
  GlobalPointer<PRINTER_INFO_2W> m_info;
  GlobalPointer<DEVMODEW> m_mode;  // where the record has none of its own
};

void ChangeFormat(DEVMODEW& mode, short format, short orientation) {
  if (format < kFirstCustom) {
    mode.dmFields = DM_PAPERSIZE;
    mode.dmPaperSize = format;
  } else {
    mode.dmFields = DM_PAPERSIZE | DM_PAPERLENGTH | DM_PAPERWIDTH;
    mode.dmPaperSize = 0;
    // Of a large one the length goes with the orientation; any other number is an upright A4.
    const bool isLarge = format == kFirstLarge || format == kSecondLarge;
    const Size size = SizeOf(isLarge ? format : kA4);
    const bool isUpright = !isLarge || orientation == DMORIENT_PORTRAIT;
    mode.dmPaperLength = static_cast<short>(isUpright ? size.height : size.width);
    mode.dmPaperWidth = static_cast<short>(isUpright ? size.width : size.height);
  }
}

void ChangeOrientation(DEVMODEW& mode, short, short orientation) {
  mode.dmFields = DM_ORIENTATION;
  mode.dmOrientation = orientation;
}

bool ReadPage(short& format, short& orientation) {
  DefaultPrinter printer;
  if (!printer.Open()) return false;
  format = printer.Mode().dmPaperSize;
  orientation = printer.Mode().dmOrientation;
  return true;
}

// Each change is a pass of its own: a printer may refuse the one and take the other.
using Change = void (*)(DEVMODEW& mode, short format, short orientation);

bool ChangePage(Change change, short format, short orientation) {
  DefaultPrinter printer;
  if (!printer.Open()) return false;
  change(printer.Mode(), format, orientation);
  return printer.Apply();
}

CPrinterPageSetter* instance = nullptr;

}  // namespace

void GetSizeOfPageFormat(short format, bool landscape, int& width, int& height) {
  const Size size = SizeOf(format);
  width = landscape ? size.height : size.width;
  height = landscape ? size.width : size.height;
}

bool GetPageFormatAndOrientationFromSize(int width, int height, short& format, bool& landscape) {
  for (format = 1; format <= kFormats; ++format) {
    const Size size = SizeOf(format);
    landscape = size.width == height && size.height == width;
    if (landscape || (size.width == width && size.height == height)) return true;
  }
  format = -2;
  landscape = false;
  return false;
}

void GetPaperSizeAndOrientation(short& format, bool& landscape) {
  short orientation = DMORIENT_PORTRAIT;
  if (ReadPage(format, orientation)) {
    landscape = orientation == DMORIENT_LANDSCAPE;
  } else {
    format = -1;
  }
}

int SetPaperSizeAndOrientation(short format, bool landscape) {
  const short orientation = landscape ? DMORIENT_LANDSCAPE : DMORIENT_PORTRAIT;
  const bool hasFormat = ChangePage(&ChangeFormat, format, orientation);
  const bool hasOrientation = ChangePage(&ChangeOrientation, format, orientation);
  return hasFormat && hasOrientation;
}

CPrinterPageSetter& CPrinterPageSetter::GetInstance() {
  return instance == nullptr ? *new CPrinterPageSetter : *instance;
}

CPrinterPageSetter::CPrinterPageSetter() {
  instance = this;
  GetPaperSizeAndOrientation(m_format, m_landscape);
}

CPrinterPageSetter::~CPrinterPageSetter() {
  if (m_format != -1) {
    short format = -1;
    bool landscape = m_landscape;
    GetPaperSizeAndOrientation(format, landscape);
    if (format != m_format || landscape != m_landscape) {
      ::SetPaperSizeAndOrientation(m_format, m_landscape);
    }
  }
  instance = nullptr;
}

int CPrinterPageSetter::SetPaperSizeAndOrientation(short format, bool landscape) {
  return ::SetPaperSizeAndOrientation(format, landscape);
}
