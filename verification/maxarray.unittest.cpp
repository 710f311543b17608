#include "core/containers/maxarray.h"
#include "core/memory/memorymanager.h"
#include <gtest/gtest.h>
#include <set>
#include <vector>
class TMaxArrayTest : public testing::Test
{
    ZMemAllocatorScope m_scope;
};
TEST_F(TMaxArrayTest, Simple)
{
    TMaxArray<int, 10> arr;
    EXPECT_TRUE(arr.IsEmpty());
    EXPECT_EQ(0, arr.Size());

    arr.Add(400);
    arr.Add(300);
    arr.Add(500);
    arr.Add(700);
    EXPECT_FALSE(arr.IsEmpty());
    EXPECT_EQ(4, arr.Size());
    EXPECT_EQ(300, arr[1]);

    arr.Clear();
    EXPECT_TRUE(arr.IsEmpty());
    EXPECT_EQ(0, arr.Size());
}

namespace
{
int ms_nConstructorCalls = 0;
std::vector<int> ms_DestructorCalls;
std::set<std::pair<int, int>> ms_AssignmentCalls;

// The destructor and the copy assignment leave a trace. There are no move operations, and the copy constructor leaves
// no trace.
struct SCountingElement
{
    explicit SCountingElement(int nValue) : m_nValue(nValue) { ++ms_nConstructorCalls; }
    SCountingElement(const SCountingElement& other) = default;
    ~SCountingElement() { ms_DestructorCalls.push_back(m_nValue); }
    SCountingElement& operator=(const SCountingElement& other)
    {
        ms_AssignmentCalls.insert({m_nValue, other.m_nValue});
        m_nValue = other.m_nValue;
        return *this;
    }
    static void Reset() { ms_nConstructorCalls = 0, ms_DestructorCalls.clear(), ms_AssignmentCalls.clear(); }
    int m_nValue;
};
} // namespace

TEST_F(TMaxArrayTest, TestErase)
{
    TMaxArray<SCountingElement, 10> arr;
    for (int i = 0; i < 6; ++i)
    {
        const SCountingElement element(i);
        arr.Add(element);
    }

    SCountingElement::Reset();
    arr.Erase(2);
    // clang-format off
    ASSERT_EQ(0, ms_nConstructorCalls);
    ASSERT_EQ(1, ms_DestructorCalls.size());
    ASSERT_EQ(5, ms_DestructorCalls[0]);
    ASSERT_EQ(3, ms_AssignmentCalls.size());
    ASSERT_TRUE(ms_AssignmentCalls.find(std::pair<int,int>(2, 3)) != ms_AssignmentCalls.end());
    ASSERT_TRUE(ms_AssignmentCalls.find(std::pair<int,int>(3, 4)) != ms_AssignmentCalls.end());
    ASSERT_TRUE(ms_AssignmentCalls.find(std::pair<int,int>(4, 5)) != ms_AssignmentCalls.end());
}
