// Iterators in a source that has them checked. The other sources of this program have not.
#undef KX_CHECK_ITERATORS
#define KX_CHECK_ITERATORS

#include "tests/support/breaks.h"
#include "tests/support/containers.h"

TEST(CheckedIterators, BreakIfTheyAreReadAtTheEnd)
{
    const ZMemAllocatorScope scope;
    const auto breaks = [](auto container)
    {
        auto pos = container.Begin();
        static_cast<void>(*pos);
        ++pos;
        EXPECT_BREAK(static_cast<void>(*pos));
        EXPECT_BREAK(static_cast<void>(std::as_const(container).End().operator->()));
        container.Clear();
        EXPECT_BREAK(static_cast<void>(*container.Begin()));
    };
    breaks(TBlockArray<int>{1});
    breaks(TSList<int>{1});
    breaks(TSet<int>{1});
    breaks(TMultiMap<int, double>{{1, 1}});
    breaks(THashSet<int>{1});
    breaks(THashMap<int, int>{{1, 1}});
    EXPECT_BREAK((TMap<int, int>().Find(1)->Value() = 1));
}
