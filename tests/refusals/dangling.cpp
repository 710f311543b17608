// References and iterators that would outlive their container.
#include "tests/refusals/refuse.h"
#include "tests/support/containers.h"

void Use()
{
    KX_REFUSE(REFERENCE_INTO_TEMPORARY, "temporary bound to local reference 'dangling'",
              [[maybe_unused]] const int& dangling = TArray<int>{1}[0]);
    KX_REFUSE(ITERATOR_INTO_TEMPORARY, "temporary whose address is used as value of local variable 'dangling'",
              [[maybe_unused]] const auto dangling = TMap<int, int>().Begin());
}
