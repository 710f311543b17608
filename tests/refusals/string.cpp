// What is not known to be a literal, and what has no place for its terminator.
#include "core/strings/string.h"
#include "core/strings/stack_string.h"
#include "core/strings/stringfunc.h"
#include "tests/refusals/refuse.h"

#pragma GCC diagnostic error "-Wunused-result"

void Use(char c)
{
    [[maybe_unused]] int nNumber = 0;
    KX_REFUSE(DROPPED_PIECE, "ignoring return value", ZString("a.b").Substring(0, 1));
    KX_REFUSE(DROPPED_SUCCESS, "ignoring return value", IntFromString("7", &nNumber));
    [[maybe_unused]] static constexpr char kWord[] = {'w', 'o', 'r', 'd'};
    [[maybe_unused]] const char acFilled[] = {c, '\0'};
    KX_REFUSE(FILLED_ARRAY, "acFilled.* constant expression", ZString refused = acFilled);
    KX_REFUSE(NO_TERMINATOR, "ThisCharacterArrayHasNoTerminator", ZString refused = kWord);
    KX_REFUSE(FORMAT_ALONE, "IncludeCoreDynamicFormatH", ZString::Format("{0}", 1));
    KX_REFUSE(FORMAT_OF_EIGHT, "IncludeCoreDynamicFormatH", ZString::Format("{7}", 1, 2, 3, 4, 5, 6, 7, 8));
    KX_REFUSE(STACK_STRING_OF_NONE, "needs a byte for the terminator", ZStackString<0> refused);
}
