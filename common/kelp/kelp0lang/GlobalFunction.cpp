#include "kelp0lang/GlobalFunction.h"

namespace kelp {

CGlobalFunction::~CGlobalFunction() = default;

constinit CGlobalFunctionManager* CGlobalFunctionManager::s_instance = nullptr;

CGlobalFunctionManager& CGlobalFunctionManager::GetInstance() {
  if (s_instance == nullptr) s_instance = new CGlobalFunctionManager;
  return *s_instance;
}

// A function on its way out may still register and execute others, in what is left of the table.
CGlobalFunctionManager::~CGlobalFunctionManager() {
  while (!m_functions.empty()) delete m_functions.extract(m_functions.begin()).mapped();
  s_instance = nullptr;
}

void CGlobalFunctionManager::Register(int number, CGlobalFunction* function) {
  const CCriticalSecLock lock(&m_section);
  CGlobalFunction*& entry = m_functions[number];
  if (entry == nullptr) entry = function;
}

CGlobalFunction* CGlobalFunctionManager::Find(int number) {
  const CCriticalSecLock lock(&m_section);
  const auto found = m_functions.find(number);
  return found == m_functions.end() ? nullptr : found->second;
}

CGlobalFunction::enumResult RegisterGlobalFunction(int number, CGlobalFunction* function) {
  CGlobalFunctionManager::GetInstance().Register(number, function);
  return CGlobalFunction::gfDone;
}

CGlobalFunction::enumResult ExecuteGlobalFunction(int number, int argumentCount,
                                                  CPolyValue* arguments, CPolyValue& result) {
  CGlobalFunction* const function = CGlobalFunctionManager::GetInstance().Find(number);
  if (function == nullptr) return CGlobalFunction::gfNoFunction;
  return function->Execute(argumentCount, arguments, result);
}

}  // namespace kelp
