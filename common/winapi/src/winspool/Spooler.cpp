// Printers, for those who ask by the calls of Windows.
#include <windows.h>
#include <winspool.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "CopyText.h"
#include "Fail.h"
#include "kernel32/PathName.h"
#include "winspool/Queue.h"
#include "winspool/UserOptions.h"

using winapi::PageSettings;
using winapi::Paper;
using winapi::Queue;

namespace {

constexpr DWORD kPageFields =
    DM_ORIENTATION | DM_PAPERSIZE | DM_PAPERLENGTH | DM_PAPERWIDTH | DM_FORMNAME;

// The open printers by their handles: each is the name of its queue.
struct OpenPrinters {
  std::mutex mutex;
  std::map<HANDLE, std::string> names;
  std::uintptr_t last = 0x10000;
};

// It outlives all static objects.
OpenPrinters& Open() {
  static auto* const printers = new OpenPrinters;
  return *printers;
}

// False with the last error.
bool NameOf(HANDLE printer, std::string& name) {
  const std::lock_guard lock(Open().mutex);
  const auto found = Open().names.find(printer);
  if (found == Open().names.end()) return Fail(ERROR_INVALID_HANDLE);
  name = found->second;
  return true;
}

int16_t Tenths(int hundredths) {
  return static_cast<int16_t>(std::clamp((hundredths + 5) / 10, 0, INT16_MAX));
}

void WriteDeviceMode(const std::string& queue, const PageSettings& settings, DEVMODEW& mode) {
  mode = {};
  CopyText(FromUtf8(queue), mode.dmDeviceName, CCHDEVICENAME);
  mode.dmSpecVersion = DM_SPECVERSION;
  mode.dmSize = sizeof mode;
  mode.dmFields = kPageFields;
  mode.dmOrientation = settings.isLandscape ? DMORIENT_LANDSCAPE : DMORIENT_PORTRAIT;
  mode.dmPaperSize = static_cast<int16_t>(NumberOf(settings.paper));
  mode.dmPaperLength = Tenths(settings.paper.length);
  mode.dmPaperWidth = Tenths(settings.paper.width);
  CopyText(FromUtf8(settings.paper.name), mode.dmFormName, CCHFORMNAME);
}

// Takes over what the fields of a device mode say, as far as the queue takes it. A size goes before
// a number.
bool ReadDeviceMode(const DEVMODEW& mode, Queue& queue, PageSettings& settings) {
  constexpr DWORD kSize = DM_PAPERLENGTH | DM_PAPERWIDTH;
  Paper wanted;
  if ((mode.dmFields & kSize) == kSize) {
    wanted = {"", 10 * mode.dmPaperWidth, 10 * mode.dmPaperLength};
  } else if ((mode.dmFields & DM_PAPERSIZE) != 0) {
    wanted = winapi::PaperOfNumber(mode.dmPaperSize);
  } else {
    wanted = settings.paper;
  }
  if (!queue.Papers().Find(wanted.width, wanted.length, settings.paper)) return false;
  if ((mode.dmFields & DM_ORIENTATION) == 0) return true;
  if (mode.dmOrientation != DMORIENT_PORTRAIT && mode.dmOrientation != DMORIENT_LANDSCAPE) {
    return false;
  }
  settings.isLandscape = mode.dmOrientation == DMORIENT_LANDSCAPE;
  return queue.TakesOrientation(settings.isLandscape);
}

// The record and what it points to, one behind another.
class PrinterRecord {
 public:
  explicit PrinterRecord(Queue& queue) : m_hasMode(queue.Settings(m_settings)), m_queue(queue) {
    Add(queue.Name(), &PRINTER_INFO_2W::pPrinterName);
    Add(queue.Name(), &PRINTER_INFO_2W::pShareName);
    Add(queue.Option("device-uri"), &PRINTER_INFO_2W::pPortName);
    Add(queue.Option("printer-make-and-model"), &PRINTER_INFO_2W::pDriverName);
    Add(queue.Option("printer-info"), &PRINTER_INFO_2W::pComment);
    Add(queue.Option("printer-location"), &PRINTER_INFO_2W::pLocation);
    Add("CUPS", &PRINTER_INFO_2W::pPrintProcessor);
    Add("RAW", &PRINTER_INFO_2W::pDatatype);
    Add("", &PRINTER_INFO_2W::pParameters);
    Add("", &PRINTER_INFO_2W::pSepFile);
  }

  std::size_t Size() const {
    std::size_t size = sizeof(PRINTER_INFO_2W) + (m_hasMode ? sizeof(DEVMODEW) : 0);
    for (const Text& text : m_texts) size += (text.content.size() + 1) * sizeof(WCHAR);
    return size;
  }
  void WriteTo(BYTE* block) const {
    constexpr const char* kStopped = "5";
    auto& record = *reinterpret_cast<PRINTER_INFO_2W*>(block);
    record = {};
    BYTE* next = block + sizeof record;
    if (m_hasMode) {
      record.pDevMode = reinterpret_cast<DEVMODEW*>(next);
      WriteDeviceMode(m_queue.Name(), m_settings, *record.pDevMode);
      next += sizeof(DEVMODEW);
    }
    for (const Text& text : m_texts) {
      auto* const place = reinterpret_cast<WCHAR*>(next);
      record.*text.field = place;
      *std::copy(text.content.begin(), text.content.end(), place) = 0;
      next += (text.content.size() + 1) * sizeof(WCHAR);
    }
    record.Attributes = PRINTER_ATTRIBUTE_QUEUED;
    record.Status = m_queue.Option("printer-state") == kStopped ? PRINTER_STATUS_PAUSED : 0;
  }

 private:
  using Field = LPWSTR PRINTER_INFO_2W::*;
  struct Text {
    std::u16string content;
    Field field;
  };

  void Add(const std::string& text, Field field) { m_texts.push_back({FromUtf8(text), field}); }

  PageSettings m_settings;
  const bool m_hasMode;
  const Queue& m_queue;
  std::vector<Text> m_texts;
};

LONG FailMode(DWORD error) {
  return Fail(error, LONG{-1});
}

}  // namespace

BOOL WINAPI GetDefaultPrinterW(LPWSTR name, LPDWORD size) {
  if (size == nullptr) return Fail(ERROR_INVALID_PARAMETER);
  const Queue queue("");
  if (!queue.IsThere()) return Fail(queue.Error(ERROR_FILE_NOT_FOUND));
  const std::u16string text = FromUtf8(queue.Name());
  const DWORD room = name == nullptr ? 0 : *size;
  *size = static_cast<DWORD>(text.size()) + 1;
  if (room < *size) return Fail(ERROR_INSUFFICIENT_BUFFER);
  CopyText(text, name, static_cast<int>(*size));
  return TRUE;
}

BOOL WINAPI OpenPrinterW(LPWSTR name, LPHANDLE printer, LPPRINTER_DEFAULTSW defaults) {
  if (printer == nullptr) return Fail(ERROR_INVALID_PARAMETER);
  *printer = nullptr;
  if (name == nullptr || *name == 0) return Fail(ERROR_INVALID_PRINTER_NAME);
  if (defaults != nullptr &&
      (defaults->DesiredAccess & ~static_cast<DWORD>(PRINTER_ACCESS_USE)) != 0) {
    return Fail(ERROR_ACCESS_DENIED);
  }
  const std::string queueName = ToUtf8(name);
  const Queue queue(queueName);
  if (!queue.IsThere()) return Fail(queue.Error(ERROR_INVALID_PRINTER_NAME));
  const std::lock_guard lock(Open().mutex);
  *printer = reinterpret_cast<HANDLE>(++Open().last);
  Open().names.emplace(*printer, queueName);
  return TRUE;
}

BOOL WINAPI ClosePrinter(HANDLE printer) {
  const std::lock_guard lock(Open().mutex);
  return Open().names.erase(printer) == 1 ? TRUE : Fail(ERROR_INVALID_HANDLE);
}

BOOL WINAPI GetPrinterW(HANDLE printer, DWORD level, BYTE* info, DWORD size, LPDWORD needed) {
  std::string name;
  if (!NameOf(printer, name)) return FALSE;
  if (level != 2) return Fail(ERROR_INVALID_LEVEL);
  if (needed == nullptr) return Fail(ERROR_INVALID_PARAMETER);
  Queue queue(name);
  if (!queue.IsThere()) return Fail(queue.Error(ERROR_INVALID_PRINTER_NAME));
  const PrinterRecord record(queue);
  *needed = static_cast<DWORD>(record.Size());
  if (info == nullptr || size < *needed) return Fail(ERROR_INSUFFICIENT_BUFFER);
  record.WriteTo(info);
  return TRUE;
}

BOOL WINAPI SetPrinterW(HANDLE printer, DWORD level, BYTE* info, DWORD command) {
  std::string name;
  if (!NameOf(printer, name)) return FALSE;
  if (level != 2) return Fail(ERROR_INVALID_LEVEL);
  if (command != 0) return Fail(ERROR_INVALID_PRINTER_COMMAND);
  const auto* const record = reinterpret_cast<const PRINTER_INFO_2W*>(info);
  if (record == nullptr || record->pDevMode == nullptr) return Fail(ERROR_INVALID_PARAMETER);
  Queue queue(name);
  if (!queue.IsThere()) return Fail(queue.Error(ERROR_INVALID_PRINTER_NAME));
  PageSettings settings;
  if (!queue.Settings(settings) || !ReadDeviceMode(*record->pDevMode, queue, settings)) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  constexpr const char* kPortrait = "3";
  constexpr const char* kLandscape = "4";
  return winapi::SetUserOptions(
      name, {{CUPS_MEDIA, settings.paper.name},
             {CUPS_ORIENTATION, settings.isLandscape ? kLandscape : kPortrait}});
}

LONG WINAPI DocumentPropertiesW(HWND, HANDLE printer, LPWSTR, LPDEVMODEW output, LPDEVMODEW input,
                                DWORD mode) {
  std::string name;
  if (!NameOf(printer, name)) return -1;
  if (mode == 0) return sizeof(DEVMODEW);
  if ((mode & ~static_cast<DWORD>(DM_IN_BUFFER | DM_OUT_BUFFER)) != 0) {
    return FailMode(ERROR_NOT_SUPPORTED);
  }
  Queue queue(name);
  if (!queue.IsThere()) return FailMode(queue.Error(ERROR_INVALID_PRINTER_NAME));
  PageSettings settings;
  if (!queue.Settings(settings)) return FailMode(ERROR_INVALID_DATA);
  if ((mode & DM_IN_BUFFER) != 0 &&
      (input == nullptr || !ReadDeviceMode(*input, queue, settings))) {
    return FailMode(ERROR_INVALID_PARAMETER);
  }
  if ((mode & DM_OUT_BUFFER) != 0) {
    if (output == nullptr) return FailMode(ERROR_INVALID_PARAMETER);
    WriteDeviceMode(name, settings, *output);
  }
  return IDOK;
}
