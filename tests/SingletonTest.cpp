// A program of its own: the tests delete all that has enrolled.
#include <gtest/gtest.h>
#include <kelp0lang/kelp0lang.h>

#include <cstdio>
#include <cstdlib>
#include <string>

using kelp::CSingletonManager;
using kelp::ISingleton;

namespace {

std::string deaths;

class Named : public ISingleton {
 public:
  explicit Named(char name, bool forLast = false) : m_name(name), m_forLast(forLast) {}
  ~Named() override { deaths += m_name; }
  bool CanDestroy() override { return false; }
  bool DestroyForLast() override { return m_forLast; }

 private:
  char m_name;
  bool m_forLast;
};

std::string DeleteAll() {
  deaths.clear();
  CSingletonManager::DeleteSingletons();
  return deaths;
}

TEST(Singleton, TheLastEnrolledGoesFirst) {
  new Named('A');
  new Named('B');
  new Named('C');
  EXPECT_EQ(DeleteAll(), "CBA");
  EXPECT_EQ(DeleteAll(), "");
  new Named('D');
  EXPECT_EQ(DeleteAll(), "D") << "the list takes enrolments again";
}

TEST(Singleton, OneGoesBehindAllOthers) {
  new Named('A');
  new Named('B', true);
  new Named('C');
  EXPECT_EQ(DeleteAll(), "CAB");

  new Named('A', true);
  auto* left = new Named('B', true);
  new Named('C');
  EXPECT_EQ(DeleteAll(), "CA") << "of several the earliest";
  delete left;
}

class Failing : public Named {
 public:
  explicit Failing(char name) : Named(name) { throw name; }
};

class Owner : public Named {
 public:
  Owner(char name, Named* owned) : Named(name), m_owned(owned) {}
  ~Owner() override { delete m_owned; }

 private:
  Named* m_owned;
};

TEST(Singleton, WhatIsGoneIsNotDeletedAgain) {
  new Named('A');
  EXPECT_THROW(new Failing('B'), char);
  auto* gone = new Named('C');
  new Named('D');
  delete gone;
  EXPECT_EQ(DeleteAll(), "DA");

  auto* owned = new Named('A');
  new Named('B');
  auto* last = new Named('C', true);
  new Owner('D', owned);
  new Owner('E', last);
  EXPECT_EQ(DeleteAll(), "CEADB") << "each once, what another owned with it";
}

TEST(Singleton, TheFoldersBeginAnewBehindTheDeletion) {
  using kelp::WString;
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(kelp::GetProgramFolderPath(WString()), WString());
    EXPECT_EQ(kelp::GetMapsFolderPath(WString()), KTEXT("/Maps"));
    kelp::SetFolderFileNames(KTEXT("Fonts"));
    EXPECT_EQ(kelp::GetFontsFolderPath(WString()), KTEXT("/Fonts"));
    DeleteAll();
  }
}

class Telling : public ISingleton {
 public:
  explicit Telling(const char* word) : m_word(word) {}
  ~Telling() override {
    // The process-wide critical section and the "C" locale outlive the singletons.
    kelp::CCriticalSecLock lock(&kelp::CCriticalSec::GetGlobalCritSection());
    std::fputs(kelp_get_c_locale() == nullptr ? "no locale" : m_word, stderr);
  }

 private:
  const char* m_word;
};

TEST(SingletonDeathTest, UnloadingDeletesTheList) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_EXIT(
      {
        new Telling("first");
        new Telling("second");
        std::exit(0);
      },
      testing::ExitedWithCode(0), "secondfirst");
}

}  // namespace
