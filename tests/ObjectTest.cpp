#include "kelp0lang/Object.h"

#include <exception>
#include <thread>
#include <type_traits>
#include <vector>

#include "kelp0lang/Exception.h"
#include "tests/TestText.h"

using namespace kelp;

namespace {

class Counted : public IRefCounter {
 public:
  explicit Counted(int* deaths) : m_deaths(deaths) {}
  Counted(const Counted&) = default;
  Counted& operator=(const Counted&) = default;

 protected:
  ~Counted() override { ++*m_deaths; }

 private:
  int* m_deaths;
};

TEST(RefCounter, DiesWithTheLastReference) {
  int deaths = 0;
  auto* once = new Counted(&deaths);
  once->SubReference();
  EXPECT_EQ(deaths, 1);

  auto* twice = new Counted(&deaths);
  twice->AddReference();
  auto* copy = new Counted(*twice);
  copy->SubReference();
  EXPECT_EQ(deaths, 2) << "a copy counts for itself";
  auto* other = new Counted(&deaths);
  *twice = *other;
  other->SubReference();
  twice->SubReference();
  EXPECT_EQ(deaths, 3) << "assignment leaves the count";
  twice->SubReference();
  EXPECT_EQ(deaths, 4);
}

TEST(RefCounter, SentinelKeepsAnObjectAlive) {
  int deaths = 0;
  auto* object = new Counted(&deaths);
  {
    CRefCounterSentinel sentinel(object);
    object->SubReference();
    EXPECT_EQ(deaths, 0);
  }
  EXPECT_EQ(deaths, 1);
}

TEST(RefCounter, ThreadsReleaseOnce) {
  for (int round = 0; round < 200; ++round) {
    int deaths = 0;
    auto* object = new Counted(&deaths);
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t) {
      object->AddReference();
      threads.emplace_back([object] { object->SubReference(); });
    }
    object->SubReference();
    for (std::thread& thread : threads) thread.join();
    ASSERT_EQ(deaths, 1);
  }
}

struct alignas(64) Aligned : IRefCounter {
  double rows[8];
};

TEST(RefCounter, ObjectsKeepTheirAlignment) {
  std::vector<Aligned*> objects;
  for (int i = 0; i < 20; ++i) {
    objects.push_back(new Aligned);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(objects.back()) % alignof(Aligned), 0u);
  }
  for (Aligned* object : objects) object->SubReference();
  const std::unique_ptr<Aligned[]> row(new Aligned[3]);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(&row[2]) % alignof(Aligned), 0u);
}

TEST(RefCounter, ARowOfObjectsGoesTogether) {
  int deaths = 0;
  struct Item : IRefCounter {
    ~Item() override { ++*count; }
    int* count = nullptr;
  };
  {
    const std::unique_ptr<Item[]> row(new Item[3]);
    for (int i = 0; i < 3; ++i) row[static_cast<std::size_t>(i)].count = &deaths;
  }
  EXPECT_EQ(deaths, 3);
}

template <class E, class... Args>
WString Message(Args... args) {
  try {
    throw E(args...);
  } catch (const std::exception&) {
    return KTEXT("caught as std::exception");
  } catch (const IException& e) {
    return e.GetMsg();
  }
}

TEST(Exception, MessagesStartWithTheName) {
  const WString x(KTEXT("x"));
  struct {
    WString plain, withMessage;
    const WChar* name;
    const WChar* full;
  } cases[] = {
      {Message<CIllegalThreadStateException>(), Message<CIllegalThreadStateException>(x),
       KTEXT("IllegalThreadStateException"), KTEXT("IllegalThreadStateExceptionx")},
      {Message<CIndexOutOfBoundsException>(), Message<CIndexOutOfBoundsException>(x),
       KTEXT("IndexOutOfBoundsException"), KTEXT("IndexOutOfBoundsExceptionx")},
      {Message<CStringIndexOutOfBoundsException>(), Message<CStringIndexOutOfBoundsException>(x),
       KTEXT("StringIndexOutOfBoundsException"), KTEXT("StringIndexOutOfBoundsExceptionx")},
      {Message<CNotImplementedException>(), Message<CNotImplementedException>(x),
       KTEXT("NotImplementedException"), KTEXT("NotImplementedException: x")},
      {Message<CNullPointerException>(), Message<CNullPointerException>(x),
       KTEXT("NullPointerException"), KTEXT("NullPointerExceptionx")},
      {Message<CVariableNotInitializedException>(), Message<CVariableNotInitializedException>(x),
       KTEXT("VariableNotInitializedException"), KTEXT("VariableNotInitializedException: x")},
      {Message<CIOException>(), Message<CIOException>(x), KTEXT("IOException"),
       KTEXT("IOException: x")},
      {Message<CFileNotFoundException>(), Message<CFileNotFoundException>(x),
       KTEXT("FileNotFoundException"), KTEXT("FileNotFoundException: x")},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.plain, c.name);
    EXPECT_EQ(c.withMessage, c.full);
  }
  EXPECT_EQ(Message<CExhaustedMemoryException>(), KTEXT("ExhaustedMemoryException"));
  EXPECT_EQ(Message<CStringIndexOutOfBoundsException>(-3),
            KTEXT("StringIndexOutOfBoundsException-3"));
  EXPECT_EQ(Message<CIOException>(WString()), KTEXT("IOException: "));
}

TEST(Exception, OnlyTheInputOutputBranchIsPolymorphic) {
  EXPECT_FALSE(std::is_polymorphic_v<CNullPointerException>);
  EXPECT_TRUE(std::is_polymorphic_v<IIOException>);
  EXPECT_THROW(throw CFileNotFoundException(), IIOException);
}

}  // namespace
