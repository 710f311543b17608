// Compiles as it stands. With one of the names defined it must not: that text is not known to be a literal, or has no
// place for its terminator.
#include "core/strings/string.h"
#include "core/strings/stack_string.h"

void Take(const ZString& text);

void Pass(char c)
{
    static constexpr char kText[] = "text";
    Take(kText);
    Take("text");
    const char acFilled[] = {c, '\0'};
    char acCopied[] = {c, '\0'};
    Take(acCopied);
#if defined(FILLED_ARRAY)
    Take(acFilled);
#elif defined(NO_TERMINATOR)
    static constexpr char kWord[] = {'w', 'o', 'r', 'd'};
    Take(kWord);
#elif defined(STACK_STRING_OF_NONE)
    ZStackString<0> refused;
#else
    Take(ZString(std::string_view(acFilled)));
#endif
}
