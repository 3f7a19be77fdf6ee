// The processor time that a scope takes, for developers; and the name of the program.
//
//   {
//     kelp::CTimeProfiler whole(KTEXT("Adjustment"));
//     {
//       kelp::CTimeProfiler part(KTEXT("Normal equations"));
//       ...
//     }
//   }  // the report of both is appended to D:\profile_times.txt
//
// Where the file can't be opened nothing is written.
//
// Threads: the times are those of the calling thread, but the open scopes are those of the whole
// process: one thread at a time profiles.
#pragma once

#include "kelp0lang/Export.h"
#include "kelp0lang/Object.h"
#include "kelptext/WideChar.h"

namespace kelp {

// Lives on the stack, from the begin of the scope to its end; one within another ends before that.
//
// The report has the name of each scope and its times in whole milliseconds: in the program (user),
// in the system (kernel), together. Those of a scope with others within follow behind their reports
// once more, without the times of those.
class KELP0LANG_API CTimeProfiler : public Object {
 public:
  // A null name is "Unknown".
  explicit CTimeProfiler(const WChar* name = nullptr);
  ~CTimeProfiler() override;
  CTimeProfiler(const CTimeProfiler&) = delete;
  CTimeProfiler& operator=(const CTimeProfiler&) = delete;
};

}  // namespace kelp

// The name of the program, one for the process, empty before it is set; at most 127 units. Not
// locked: it is set before other threads read it.
KELP0LANG_API void SetPrgName(const WChar* name);
KELP0LANG_API const WChar* GetPrgName();
