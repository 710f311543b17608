// Compiles as it stands. With one of the names defined it must not: that text is not known to be a literal.
#include "core/strings/string.h"

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
#else
    Take(ZString(std::string_view(acFilled)));
#endif
}
