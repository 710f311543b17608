// A program whose own names are those of the library's helpers: greedy templates in the global namespace and in that of
// the elements, a namespace "detail" that is brought in, and the macros of common system headers.
#include <gtest/gtest.h>
#include <iterator>
#include <string_view>

#define KX_TEST_GREEDY(name)                                                                                           \
    template <class... TArgs>                                                                                          \
    int name(TArgs&&...) = delete
#define KX_TEST_GREEDY_NAMES                                                                                           \
    KX_TEST_GREEDY(AddressOf);                                                                                         \
    KX_TEST_GREEDY(PointerTo);                                                                                         \
    KX_TEST_GREEDY(ConstructAt);                                                                                       \
    KX_TEST_GREEDY(DestroyAt);                                                                                         \
    KX_TEST_GREEDY(AssignTo);                                                                                          \
    KX_TEST_GREEDY(DestroyRange);                                                                                      \
    KX_TEST_GREEDY(CopyRange);                                                                                         \
    KX_TEST_GREEDY(RelocateRange);                                                                                     \
    KX_TEST_GREEDY(InsertShifting);                                                                                    \
    KX_TEST_GREEDY(EraseShifting);                                                                                     \
    KX_TEST_GREEDY(EqualRange);                                                                                        \
    KX_TEST_GREEDY(IsElement);                                                                                         \
    KX_TEST_GREEDY(IsInsertPosition);                                                                                  \
    KX_TEST_GREEDY(ElementOf);                                                                                         \
    KX_TEST_GREEDY(NodeOf);                                                                                            \
    KX_TEST_GREEDY(Next);                                                                                              \
    KX_TEST_GREEDY(HashNodeOf);                                                                                        \
    KX_TEST_GREEDY(NextElement);                                                                                       \
    KX_TEST_GREEDY(NextInBuckets);                                                                                     \
    KX_TEST_GREEDY(Prefetch);                                                                                          \
    KX_TEST_GREEDY(BreakUnless);                                                                                       \
    KX_TEST_GREEDY(EqualValues);                                                                                       \
    KX_TEST_GREEDY(FindProperty);                                                                                      \
    KX_TEST_GREEDY(FormatArgument);                                                                                    \
    KX_TEST_GREEDY(MakeElement);                                                                                       \
    KX_TEST_GREEDY(RequireCopies);                                                                                     \
    KX_TEST_GREEDY(OpenGap);                                                                                           \
    KX_TEST_GREEDY(ConstructFrom);                                                                                     \
    KX_TEST_GREEDY(EraseRangeShifting);                                                                                \
    KX_TEST_GREEDY(EraseMatching);                                                                                     \
    KX_TEST_GREEDY(CompareElements);                                                                                   \
    KX_TEST_GREEDY(CompareWalks);                                                                                      \
    KX_TEST_GREEDY(LookUpKey);                                                                                         \
    KX_TEST_GREEDY(TextOf);                                                                                            \
    KX_TEST_GREEDY(TruncateTo)

KX_TEST_GREEDY_NAMES;

namespace eng::detail
{
KX_TEST_GREEDY_NAMES;
} // namespace eng::detail

using namespace eng;

// Of X11 and Windows.
#define Always 2
#define Bool int
#define DestroyAll 0
#define None 0L
#define Status int
#define Success 0
#define far
#define interface struct
#define near
#define small char

#include "core/dynamic/dynamicobject.h"
#include "core/strings/stack_string.h"
#include "core/strings/stringfunc.h"
#include "core/values/demangle.h"
#include "core/values/linereader.h"
#include "core/values/version.h"
#include "runtime/resource/dynamicresourceid.h"
#include "tests/support/containers.h"

namespace eng
{
KX_TEST_GREEDY_NAMES;

struct SElement
{
    bool operator==(const SElement&) const = default;
    bool operator<(const SElement& other) const { return m_n < other.m_n; }
    int m_n;
};

inline uint32 HashKey(const SElement& element)
{
    return ::HashKey(element.m_n);
}
} // namespace eng

namespace
{
// Walks the container, changes it by all the usual ways, and says how many elements there are.
template <class TContainer>
uint64 Use(TContainer container)
{
    TContainer copy(container);
    copy = container;
    copy = TContainer(std::move(container));
    auto enumerator = copy.GetEnumerator();
    while (enumerator.MoveNext())
        static_cast<void>(enumerator.Current());
    copy.Erase(std::next(copy.Begin()));
    if constexpr (requires { copy.EmplaceAt(copy.Begin(), eng::SElement{1}); })
        copy.EmplaceAt(copy.Begin(), eng::SElement{1});
    else if constexpr (requires { copy.Begin()->Key(); })
        copy.Emplace(copy.Begin()->Key());
    else
        copy.Emplace(*copy.Begin());
    if constexpr (requires { copy.AddRange({}); })
        copy.AddRange({});
    copy.EraseIf([](const auto&) { return false; });
    return static_cast<uint64>(std::distance(copy.begin(), copy.end()));
}

template <class... TContainers, class TElement>
uint64 UseAll(const TElement& one, const TElement& two, const TElement& three)
{
    return (Use(TContainers{one, two, three}) + ...);
}
} // namespace

TEST(GreedyNames, AreNotTheLibrarysOwn)
{
    const ZMemAllocatorScope scope;
    using E = eng::SElement;
    using Pair = TKeyValuePair<E, E>;
    EXPECT_EQ(25u, (UseAll<TArray<E>, TMaxArray<E, 4>, TBlockArray<E>, TList<E>, TSList<E>, TRedBlackTree<E>, TSet<E>,
                           TMultiSet<E>, THashSet<E>>(E{1}, E{2}, E{3})));
    EXPECT_EQ(10u, (UseAll<TMap<E, E>, TMultiMap<E, E>, THashMap<E, E>, TMultiHashMap<E, E>>(
                       Pair({1}, {1}), Pair({2}, {2}), Pair({3}, {3}))));
    EXPECT_EQ(2u, (Use(TMap<int, int>{{1, 1}, {2, 2}, {3, 3}})));
    const ZDynamicObject tree = ZDynamicObject::Object().Set("key", ZString::Format("{0}", "text")).Set("n", 5);
    EXPECT_TRUE(tree["key"] == "text" && tree["n"] == 5 && ZDynamicObject(tree) == tree);
}
