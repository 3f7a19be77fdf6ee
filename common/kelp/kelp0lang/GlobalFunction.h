// Numbered functions of the process, by which one part of a program calls another without linking
// to it. Arguments and result travel as CPolyValue.
//
//   class CountPoints : public kelp::CGlobalFunction {
//     enumResult Execute(int, kelp::CPolyValue* arguments, kelp::CPolyValue& result) override {
//       result = Count(arguments[0].GetStringValue());
//       return gfDone;
//     }
//   };
//   kelp::RegisterGlobalFunction(1200, new CountPoints);
//
//   kelp::CPolyValue file(KTEXT("a.pts")), count;
//   kelp::ExecuteGlobalFunction(1200, 1, &file, count);
//
// The table lives until the singletons are deleted, and takes its functions with it.
//
// Threads: any, but for the first call, which builds the table. A function runs on the thread of
// its caller and outside the table's lock, so it may itself register and execute functions.
#pragma once

#include <cstdint>
#include <map>

#include "kelp0lang/CriticalSec.h"
#include "kelp0lang/Export.h"
#include "kelp0lang/PolyValue.h"
#include "kelp0lang/Singleton.h"

namespace kelp {

class KELP0LANG_API CGlobalFunction {
 public:
  // A function may answer any other number too; its meaning is between it and its callers.
  enum enumResult : std::int32_t { gfDone = 0, gfNoFunction = -2 };

  CGlobalFunction() = default;
  CGlobalFunction(const CGlobalFunction&) = default;
  CGlobalFunction& operator=(const CGlobalFunction&) = default;
  virtual ~CGlobalFunction();
  // The arguments are those of the caller, who sees what the function does to them. An exception
  // passes to the caller.
  virtual enumResult Execute(int argumentCount, CPolyValue* arguments, CPolyValue& result) = 0;
};

// The table behind the two functions below.
class KELP0LANG_API CGlobalFunctionManager : public ISingleton {
 public:
  static CGlobalFunctionManager& GetInstance();

  void Register(int number, CGlobalFunction* function);
  // Null where there is none.
  CGlobalFunction* Find(int number);

 private:
  CGlobalFunctionManager() = default;
  // Deletes the functions in ascending order of their numbers.
  ~CGlobalFunctionManager() override;

  static CGlobalFunctionManager* s_instance;
  CCriticalSec m_section;
  std::map<int, CGlobalFunction*> m_functions;
};

// Gives the function to the table, which owns it from now on. Where the number has a function
// already that one stays, and the new one remains the caller's; where that matters
// CGlobalFunctionManager::Find tells which it is. The answer is gfDone in both cases. Null only
// makes a place for a function to come.
KELP0LANG_API CGlobalFunction::enumResult RegisterGlobalFunction(int number,
                                                                 CGlobalFunction* function);
// What the function answers; gfNoFunction, and result as it was, where the number has none.
KELP0LANG_API CGlobalFunction::enumResult ExecuteGlobalFunction(int number, int argumentCount,
                                                                CPolyValue* arguments,
                                                                CPolyValue& result);

}  // namespace kelp
