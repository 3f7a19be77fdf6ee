// In a program of its own kind: the table goes with the singletons.
#include "kelp0lang/GlobalFunction.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include "tests/TestText.h"

using kelp::CGlobalFunction;
using kelp::CPolyValue;
using kelp::ExecuteGlobalFunction;
using kelp::RegisterGlobalFunction;

namespace {

std::string deaths;

class Named : public CGlobalFunction {
 public:
  explicit Named(char name) : m_name(name) {}
  ~Named() override { deaths += m_name; }
  enumResult Execute(int count, CPolyValue* arguments, CPolyValue& result) override {
    if (count < 0) throw std::runtime_error("no such count");
    result = count == 0 ? 0 : arguments[count - 1].GetInt32Value() + m_name;
    if (count > 0) arguments[0] = true;
    return enumResult{m_name};
  }

 private:
  char m_name;
};

std::string DeleteAll() {
  deaths.clear();
  kelp::CSingletonManager::DeleteSingletons();
  return deaths;
}

TEST(GlobalFunction, TheFirstUnderANumberStays) {
  CPolyValue result(KTEXT("untouched"));
  EXPECT_EQ(ExecuteGlobalFunction(7, 0, nullptr, result), -2);
  auto* const second = new Named('b');
  EXPECT_EQ(RegisterGlobalFunction(7, nullptr), 0);
  EXPECT_EQ(ExecuteGlobalFunction(7, 0, nullptr, result), -2) << "only a place";
  EXPECT_EQ(result.GetStringValue(), kelp::WString(KTEXT("untouched")));
  EXPECT_EQ(RegisterGlobalFunction(7, new Named('a')), 0);
  EXPECT_EQ(RegisterGlobalFunction(7, second), 0);
  const std::unique_ptr<Named> stillMine(second);

  CPolyValue arguments[] = {1, 20};
  EXPECT_EQ(ExecuteGlobalFunction(7, 2, arguments, result), 'a');
  EXPECT_EQ(result.GetInt32Value(), 20 + 'a');
  EXPECT_TRUE(arguments[0] == CPolyValue(true));
  EXPECT_THROW(ExecuteGlobalFunction(7, -1, arguments, result), std::runtime_error);
  RegisterGlobalFunction(-1, new Named('c'));
  EXPECT_EQ(DeleteAll(), "ca") << "in the order of their numbers";
  EXPECT_EQ(ExecuteGlobalFunction(7, 0, nullptr, result), -2) << "a new table";
}

// Runs within the table's own work: it would wait for ever if the lock were held.
class Nested : public CGlobalFunction {
 public:
  ~Nested() override {
    CPolyValue result;
    deaths += ExecuteGlobalFunction(5, 0, nullptr, result) == gfNoFunction ? 'n' : '?';
    RegisterGlobalFunction(1, new Named('l'));
  }
  enumResult Execute(int, CPolyValue*, CPolyValue& result) override {
    enumResult answer = gfDone;
    std::thread([&] {
      RegisterGlobalFunction(6, new Named('x'));
      answer = ExecuteGlobalFunction(6, 0, nullptr, result);
    }).join();
    return answer;
  }
};

TEST(GlobalFunction, FunctionsUseTheTableFromAnyThreadAndUntilTheirEnd) {
  RegisterGlobalFunction(5, new Nested);
  CPolyValue result;
  EXPECT_EQ(ExecuteGlobalFunction(5, 0, nullptr, result), 'x');
  EXPECT_EQ(DeleteAll(), "nlx");
}

}  // namespace
