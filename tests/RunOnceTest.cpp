#include "kelp0lang/RunOnce.h"

#include <gtest/gtest.h>

#include <string>

using kelp::IRunOnceCommand;
using kelp::RegisterForRunOnce;
using kelp::RunOnceCommands;

namespace {

std::string steps;

class Step : public IRunOnceCommand {
 public:
  explicit Step(char name, IRunOnceCommand* next = nullptr) : m_name(name), m_next(next) {}
  ~Step() override { steps += '-', steps += m_name; }
  void Run() override {
    steps += m_name;
    // More than the array has room for.
    for (int i = 0; m_next != nullptr && i < 10; ++i) RegisterForRunOnce(m_next);
  }

 private:
  char m_name;
  IRunOnceCommand* m_next;
};

std::string RunAll() {
  steps.clear();
  RunOnceCommands();
  return steps;
}

TEST(RunOnce, RunsAndDeletesInOrderOnce) {
  EXPECT_EQ(RunAll(), "");
  RegisterForRunOnce(new Step('a'));
  RegisterForRunOnce(new Step('b'));
  EXPECT_EQ(RunAll(), "a-ab-b");
  EXPECT_EQ(RunAll(), "");
}

TEST(RunOnce, WhatACommandRegistersIsDropped) {
  auto* dropped = new Step('x');
  RegisterForRunOnce(new Step('a', dropped));
  RegisterForRunOnce(new Step('b'));
  EXPECT_EQ(RunAll(), "a-ab-b");
  EXPECT_EQ(RunAll(), "");
  delete dropped;
}

}  // namespace
