// References and iterators that would outlive their container.
#include "core/strings/stack_string.h"
#include "core/strings/string.h"
#include "tests/refusals/refuse.h"
#include "tests/support/containers.h"

void Use([[maybe_unused]] char (&acText)[4])
{
    KX_REFUSE(REFERENCE_INTO_TEMPORARY, "temporary bound to local reference 'dangling'",
              [[maybe_unused]] const int& dangling = TArray<int>{1}[0]);
    KX_REFUSE(ITERATOR_INTO_TEMPORARY, "temporary whose address is used as value of local variable 'dangling'",
              [[maybe_unused]] const auto dangling = TMap<int, int>().Begin());
    KX_REFUSE(CHARACTERS_OF_TEMPORARY, "temporary whose address is used as value of local variable 'dangling'",
              [[maybe_unused]] const char* dangling = ZString(acText).ToCString());
    KX_REFUSE(VIEW_OF_TEMPORARY, "temporary whose address is used as value of local variable 'dangling'",
              [[maybe_unused]] const std::string_view dangling = ZString(acText));
    KX_REFUSE(TRIMMED_TEMPORARY, "temporary whose address is used as value of local variable 'dangling'",
              [[maybe_unused]] const std::string_view dangling = TrimSpace(ZString(acText)));
    KX_REFUSE(PIECES_OF_TEMPORARY, "temporary implicitly bound to local reference",
              for (const std::string_view piece
                   : ZString(acText).Split(',')) static_cast<void>(piece));
    KX_REFUSE(STACK_STRING_TEMPORARY, "temporary whose address is used as value of local variable 'dangling'",
              [[maybe_unused]] const char* dangling = ZStackString<8>().appendChar(acText[0]).get());
}
