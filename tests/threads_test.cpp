// Different objects may be used by different threads at once, and one object may be read by many. A value may be built
// by one thread and destroyed by another. Run it under ThreadSanitizer: ./dev test tsan.
#include "core/memory/countingallocator.h"
#include "tests/support/plugin.h"

#include <array>
#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

using second::STwin;
KX_DECLARE_TYPE(STwin);
KX_DECLARE_TYPE(first::STwin);

STypeID* TypeOfFirstTwin()
{
    return GetTypeID<first::STwin>();
}
STypeID* TypeOfSecondTwin()
{
    return GetTypeID<STwin>();
}

namespace
{
constexpr int kThreads = 4;

class Threads : public testing::Test
{
public:
    Threads() { GetMemoryManager()->InstallAllocator(ALLOCATOR_NORMAL, &m_allocator); }
    ~Threads() override
    {
        GetMemoryManager()->UnInstallAllocator(ALLOCATOR_NORMAL);
        EXPECT_FALSE(m_allocator.ReportLeaks());
    }

    // Calls run(i) in so many threads at once.
    template <class TRun>
    static void InThreads(int nThreads, TRun run)
    {
        std::vector<std::thread> threads;
        for (int i = 0; i < nThreads; ++i)
            threads.emplace_back(run, i);
        for (std::thread& thread : threads)
            thread.join();
    }

private:
    ZCountingAllocator m_allocator;
};

// A tree with every kind of value in it, the same for the same number.
ZDynamicObject MakeTree(int n)
{
    ZDynamicObject tree = ZDynamicObject().Set("number", n).Set("vertex", ZVariant(SVertex{float32(n), 2, 3}));
    for (int i = 0; i < n % 40; ++i)
        tree.Set(ZString::Format("key {0}", i), ZDynamicObject().PushBack(i).PushBack("text").PushBack(tree[n % 3]));
    return n % 7 == 0 ? tree.Set("matrix", ZVariant(SMatrix(1))) : tree;
}
} // namespace

TEST_F(Threads, PassTreesOnWhileModulesComeAndGo)
{
    std::mutex mutex;
    std::array<ZDynamicObject, 16> slots;
    InThreads(kThreads + 1,
              [&](int nThread)
              {
                  if (nThread == kThreads)
                  {
                      for (int i = 0; i < 100; ++i)
                      {
                          const ZPlugin plugin(i % 3 == 0 ? KX_TEST_OTHER_PLUGIN : KX_TEST_PLUGIN);
                          ZDynamicObject object;
                          plugin.Fill(object);
                          EXPECT_TRUE(plugin.Reads(object));
                      }
                      return;
                  }
                  for (int i = 0; i < 3000; ++i)
                  {
                      ZDynamicObject tree = MakeTree(i + nThread);
                      {
                          const std::lock_guard lock(mutex);
                          std::swap(tree, slots[static_cast<size_t>(i * 7 + nThread) % slots.size()]);
                      }
                      EXPECT_TRUE(i % 5 != 0 || tree.IsNull() || tree.Contains("matrix")
                                  || tree == MakeTree(tree["number"].GetValue<int>()));
                  }
              });
}

TEST_F(Threads, ReadOneObject)
{
    ZDynamicObject tree = MakeTree(39);
    std::atomic<int> nStarted = 0;
    InThreads(kThreads,
              [&, &constTree = std::as_const(tree)](int)
              {
                  for (++nStarted; nStarted != kThreads;)
                      std::this_thread::yield();
                  for (int i = 0; i < 200; ++i)
                  {
                      EXPECT_TRUE(constTree["key 20"][1] == "text" && constTree["missing"]["key"].IsNull());
                      EXPECT_TRUE(ZDynamicObject(constTree) == constTree);
                      EXPECT_TRUE(ZDynamicObject(std::move(tree["missing"])).IsNull());
                      EXPECT_EQ(ZString("39 text"), ZString::Format("{0} {1}", constTree["number"].GetValue<int>(),
                                                                    constTree["key 20"][1].GetValue<ZString>()));
                  }
              });
}

TEST_F(Threads, EndBeforeTheirValues)
{
    for (int i = 0; i < 50; ++i)
    {
        std::array<ZDynamicObject, kThreads> trees;
        InThreads(kThreads, [&](int nThread) { trees[static_cast<size_t>(nThread)] = MakeTree(39); });
        InThreads(kThreads, [&](int nThread) { trees[static_cast<size_t>(nThread)].Remove("key 1"); });
    }
}
