#include "core/values/demangle.h"
#include "core/values/demanglecodes.h"

#include <charconv>

namespace
{
using Text = std::string_view;

// const and volatile, and what stands beside them. The lowest two bits are the letters A to D of the codes.
enum ECv : uint8
{
    kConst = 1,
    kVolatile = 2,
    kUnaligned = 4,
    kRestrict = 8,
    kLeftReference = 16,
    kRightReference = 32,
    kOfTarget = kConst | kVolatile | kUnaligned,
};

// What stands around a type in the code, from the inside out: it comes first there, and behind the type in the text.
struct SAround
{
    Text m_mark;            // of a pointer or reference; empty for an array
    uint8 m_targetCv;       // of what the pointer points to, or what the array consists of
    uint8 m_cv;             // of the pointer
    Text m_text;            // the class of a pointer to members; the bounds of an array
    const SAround* m_pNext; // for a pointer to this pointer, an array of it, and so on
};

enum class EName : uint8
{
    Plain,
    Constructor,
    Destructor,
    Conversion,
    Unscoped, // has no scopes behind it
    Complete, // is the whole symbol
};

struct SName
{
    Text m_text;
    EName m_kind = EName::Plain;
};

// What a function has besides its name and signature. Only verbose texts show it.
struct SAccess
{
    Text m_thunk;
    Text m_access;
    Text m_kind;
};

constexpr Text kAccess[] = {"privat: ", "protected: ", "public: "};
constexpr Text kMemberKinds[] = {"", "static ", "virtual ", "virtual "};
constexpr Text kThunk = "[thunk]: ";

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool IsNibble(char c)
{
    return c >= 'A' && c <= 'P';
}

// Up to so many names and types can be referred to, by one digit.
struct STenEntries
{
    void Add(Text entry)
    {
        if (!IsFull())
            m_entries[m_nSize++] = entry;
    }

    bool IsFull() const { return m_nSize == std::size(m_entries); }

    // The entry that the digit names, or null.
    const Text* Find(char cDigit) const
    {
        const uint32 nIndex = static_cast<uint32>(cDigit - '0');
        return nIndex < m_nSize ? &m_entries[nIndex] : nullptr;
    }

    Text m_entries[10];
    uint32 m_nSize = 0;
};

// One symbol, read by recursive descent. A function of the grammar reads its piece of the symbol and writes the text
// behind the text that there is. Where the code has things in another order than the text, what comes too early is set
// aside and written later:
//
//      m_acText
//      +------------------------------+-----------------------+-------------------------+
//      | text in the making --->      |         free          |      <--- texts set aside |
//      +------------------------------+-----------------------+-------------------------+
//                                   m_nEnd                  m_nAside
//
// A failure moves the reading position to the end, where there is nothing to read for any function, so all of them
// return soon.
class ZDemangler
{
public:
    ZDemangler(Text symbol, bool bVerbose)
        : m_pRead(symbol.data()), m_pEnd(symbol.data() + symbol.size()), m_bVerbose(bVerbose)
    {
    }

    // Whether the symbol was read, and to its end. Then it is Result().
    bool Run()
    {
        Symbol();
        return !m_bFailed && m_pRead == m_pEnd;
    }

    Text Result() const { return {m_acText, m_nEnd}; }

private:
    static constexpr uint32 kTextSize = 32 * 1024;
    static constexpr uint32 kMaxDepth = 128;

    // One level of a nested function.
    class ZLevel
    {
    public:
        explicit ZLevel(ZDemangler& demangler) : m_demangler(demangler)
        {
            if (++m_demangler.m_nDepth > kMaxDepth)
                m_demangler.Fail();
        }
        ZLevel(const ZLevel&) = delete;
        ZLevel& operator=(const ZLevel&) = delete;
        ~ZLevel() { --m_demangler.m_nDepth; }

    private:
        ZDemangler& m_demangler;
    };

    // ---- Reading. NUL stands for the end, and for a NUL in the symbol: no code has one.

    void Fail()
    {
        m_bFailed = true;
        m_pRead = m_pEnd;
    }

    char Peek() const { return m_pRead != m_pEnd ? *m_pRead : '\0'; }

    char Next()
    {
        if (m_pRead == m_pEnd)
            return Fail(), '\0';
        return *m_pRead++;
    }

    bool Consume(char c)
    {
        if (m_pRead == m_pEnd || *m_pRead != c)
            return false;
        ++m_pRead;
        return true;
    }

    bool IsAt(Text text) const { return Text(m_pRead, static_cast<size_t>(m_pEnd - m_pRead)).starts_with(text); }

    bool Consume(Text text)
    {
        if (!IsAt(text))
            return false;
        m_pRead += text.size();
        return true;
    }

    void Expect(Text text)
    {
        if (!Consume(text))
            Fail();
    }

    // For loops over a list: whether its end was reached, or a failure.
    bool Ended(char cEnd) { return Consume(cEnd) || m_bFailed; }

    // What stands before the next "@".
    Text ReadToAt()
    {
        const void* pAt = std::memchr(m_pRead, '@', static_cast<size_t>(m_pEnd - m_pRead));
        if (pAt == nullptr || pAt == m_pRead)
            return Fail(), Text();
        const Text text(m_pRead, static_cast<size_t>(static_cast<const char*>(pAt) - m_pRead));
        m_pRead += text.size() + 1;
        return text;
    }

    // A digit is the number that is one larger. Otherwise the letters A to P are hexadecimal digits, up to "@". The
    // result is the magnitude, bNegative the sign.
    uint64 ReadNumber(bool& bNegative)
    {
        bNegative = Consume('?');
        if (IsDigit(Peek()))
            return static_cast<uint64>(Next() - '0' + 1);
        uint64 nValue = 0;
        for (const char c : ReadToAt())
        {
            if (!IsNibble(c) || nValue >> 60 != 0)
                return Fail(), 0;
            nValue = nValue << 4 | static_cast<uint64>(c - 'A');
        }
        return nValue;
    }

    // const and volatile of a target or of "this", with the marks that may stand before the letter. The letters Q to T
    // belong to a target that is a member.
    uint8 ReadCv(bool* pMember = nullptr)
    {
        uint8 nCv = 0;
        for (;;)
        {
            const char c = Next();
            if (c >= 'A' && c <= 'D')
                return static_cast<uint8>(nCv | (c - 'A'));
            switch (c)
            {
            case 'E': // a pointer of 64 bits
                break;
            case 'F':
                nCv |= kUnaligned;
                break;
            case 'G':
                nCv |= kLeftReference;
                break;
            case 'H':
                nCv |= kRightReference;
                break;
            case 'I':
                nCv |= kRestrict;
                break;
            default:
                if (pMember == nullptr || c < 'Q' || c > 'T')
                    return Fail(), uint8{0};
                *pMember = true;
                return static_cast<uint8>(nCv | (c - 'Q'));
            }
        }
    }

    Text ReadConvention()
    {
        const Text text = detail::kConventions[Next()];
        if (text.empty())
            Fail();
        return text;
    }

    // ---- Writing.

    void Put(Text text)
    {
        if (text.size() > m_nAside - m_nEnd)
            return Fail();
        text.copy(m_acText + m_nEnd, text.size());
        m_nEnd += static_cast<uint32>(text.size());
    }

    void PutVerbose(Text text)
    {
        if (m_bVerbose)
            Put(text);
    }

    template <class T>
    void PutInteger(T value, int nBase = 10)
    {
        const auto result = std::to_chars(m_acText + m_nEnd, m_acText + m_nAside, value, nBase);
        if (result.ec != std::errc())
            return Fail();
        m_nEnd = static_cast<uint32>(result.ptr - m_acText);
    }

    void PutNumber()
    {
        bool bNegative = false;
        const uint64 nValue = ReadNumber(bNegative);
        if (bNegative)
            Put("-");
        PutInteger(nValue);
    }

    // Numbers of a table or a thunk, which are 32 bits with a sign, however they are spelled.
    void PutOffsets(Text before, int nCount, Text behind)
    {
        Put(before);
        for (int i = 0; i < nCount; ++i)
        {
            if (i > 0)
                Put(", ");
            bool bNegative = false;
            const uint64 nValue = ReadNumber(bNegative);
            PutInteger(static_cast<int32>(bNegative ? 0 - nValue : nValue));
        }
        Put(behind);
    }

    void PutCv(uint8 nCv)
    {
        if (nCv == 0)
            return;
        constexpr Text kTexts[] = {" const", " volatile", " __unaligned", " __restrict", "&", "&&"};
        for (size_t i = 0; i < std::size(kTexts); ++i)
        {
            if ((nCv >> i & 1) != 0)
                Put(kTexts[i]);
        }
    }

    // A copy of what was written since nBegin.
    Text Keep(uint32 nBegin)
    {
        const uint32 nSize = m_nEnd - nBegin;
        if (nSize > m_nAside - m_nEnd)
            return Fail(), Text();
        m_nAside -= nSize;
        std::memcpy(m_acText + m_nAside, m_acText + nBegin, nSize);
        return {m_acText + m_nAside, nSize};
    }

    // The same, and takes it out of the text.
    Text SetAside(uint32 nBegin)
    {
        const Text text = Keep(nBegin);
        m_nEnd = nBegin;
        return text;
    }

    // Writes a text that is not needed again. The room is free for others if it was the last one set aside.
    void PutBack(Text text)
    {
        Put(text);
        if (text.data() == m_acText + m_nAside)
            m_nAside += static_cast<uint32>(text.size());
    }

    // ---- Names.

    // The name table: the plain names in the order in which they are first read. One for the whole symbol, whatever it
    // nests, though the encoder has one for each template: behind a template the digits then stand for other names than
    // were meant.
    void Remember(Text name)
    {
        for (uint32 i = 0; i < m_names.m_nSize; ++i)
        {
            if (m_names.m_entries[i] == name)
                return;
        }
        m_names.Add(name);
    }

    Text PlainName()
    {
        if (IsDigit(Peek()))
        {
            const Text* pName = m_names.Find(Next());
            return pName != nullptr ? *pName : (Fail(), Text());
        }
        const Text name = ReadToAt();
        Remember(name);
        return name;
    }

    // A component of a name that is not the first one.
    Text Component()
    {
        if (!Consume('?'))
            return PlainName();
        if (Consume('$'))
            return ScopeTemplate();
        if (Consume("A0x"))
            return ReadToAt(), Text("'anonymous namespace'");

        const uint32 nBegin = m_nEnd;
        Put("'");
        if (Peek() == '?')
            Symbol();
        else
            ScopeNumber();
        Put("'");
        return SetAside(nBegin);
    }

    Text ScopeTemplate()
    {
        const SName name = Template();
        if (name.m_kind != EName::Plain)
            Fail();
        return name.m_text;
    }

    // The text of a digit is decimal, that of letters hexadecimal, and one larger than the number: "?9" and "?P@" both
    // read 10.
    void ScopeNumber()
    {
        const bool bDigit = IsDigit(Peek());
        bool bNegative = false;
        const uint64 nValue = ReadNumber(bNegative);
        if (bNegative || nValue == UINT64_MAX)
            return Fail();
        const uint32 nBegin = m_nEnd;
        PutInteger(bDigit ? nValue : nValue + 1, bDigit ? 10 : 16);
        for (uint32 i = nBegin; i < m_nEnd; ++i)
            m_acText[i] = m_acText[i] >= 'a' ? static_cast<char>(m_acText[i] - 'a' + 'A') : m_acText[i];
    }

    // Behind "?$". A template that is an operator has its code in place of the name.
    SName Template()
    {
        const uint32 nBegin = m_nEnd;
        SName name;
        if (Consume('?'))
            name = Operator();
        else
            name.m_text = PlainName();
        if (name.m_kind == EName::Unscoped || name.m_kind == EName::Complete)
            Fail();
        PutBack(name.m_text);
        TemplateArguments();
        name.m_text = SetAside(nBegin);
        return name;
    }

    // The scopes behind a component, and then the component. The result is where its text begins.
    uint32 Scopes(Text component)
    {
        const ZLevel level(*this);
        if (!Ended('@'))
        {
            Scopes(Component());
            Put("::");
        }
        const uint32 nBegin = m_nEnd;
        PutBack(component);
        return nBegin;
    }

    void ScopeList() { Scopes(Component()); }

    Text ClassName()
    {
        const uint32 nBegin = m_nEnd;
        ScopeList();
        return SetAside(nBegin);
    }

    // The name of a symbol, set aside.
    SName SymbolName()
    {
        const uint32 nBegin = m_nEnd;
        SName name = FirstComponent();
        switch (name.m_kind)
        {
        case EName::Constructor:
        case EName::Destructor:
        {
            const uint32 nClass = Scopes(Component());
            const Text className(m_acText + nClass, m_nEnd - nClass);
            Put(name.m_kind == EName::Destructor ? "::~" : "::");
            Put(className);
            Put(name.m_text);
            break;
        }
        case EName::Plain:
        case EName::Conversion:
            Scopes(name.m_text);
            break;
        case EName::Unscoped:
        case EName::Complete:
            PutBack(name.m_text);
            break;
        }
        name.m_text = SetAside(nBegin);
        return name;
    }

    SName FirstComponent()
    {
        if (!Consume('?'))
            return {PlainName()};
        return Consume('$') ? Template() : Operator();
    }

    SName Operator()
    {
        const char c = Next();
        switch (c)
        {
        case '0':
            return {{}, EName::Constructor};
        case '1':
            return {{}, EName::Destructor};
        case '_':
            return MoreOperators();
        default:
            return {Known(detail::kOperators[c]), c == 'B' ? EName::Conversion : EName::Plain};
        }
    }

    Text Known(Text text)
    {
        if (text.empty())
            Fail();
        return text;
    }

    // Behind "?_".
    SName MoreOperators()
    {
        const char c = Next();
        switch (c)
        {
        case 'C':
            return StringLiteral();
        case 'R':
            return RunTimeType();
        case '_':
            return StillMoreOperators();
        default:
            return {Known(detail::kMoreOperators[c])};
        }
    }

    // Behind "?__".
    SName StillMoreOperators()
    {
        const char c = Next();
        const uint32 nBegin = m_nEnd;
        switch (c)
        {
        case 'E':
            return Lifetime("'dynamic initializer for '");
        case 'F':
            return Lifetime("'dynamic atexit destructor for '");
        case 'K':
            Put("operator\"\"");
            Put(ReadToAt());
            return {SetAside(nBegin)};
        default:
            return {Known(detail::kStillMoreOperators[c])};
        }
    }

    // The function that initialises or destroys a variable: its name, or its whole symbol.
    SName Lifetime(Text before)
    {
        const uint32 nBegin = m_nEnd;
        Put(before);
        if (!IsAt("?") || IsAt("?$"))
            ScopeList();
        else
        {
            Symbol();
            Expect("@@");
        }
        Put("''");
        return {SetAside(nBegin), EName::Unscoped};
    }

    SName RunTimeType()
    {
        const uint32 nBegin = m_nEnd;
        const char c = Next();
        switch (c)
        {
        case '0':
            Type(nullptr);
            Put(" 'RTTI Type Descriptor'");
            return {SetAside(nBegin)};
        case '1':
            PutOffsets("'RTTI Base Class Descriptor at (", 4, ")'");
            return {SetAside(nBegin)};
        default:
            return {Known(detail::kRunTimeTypes[c])};
        }
    }

    // ---- String literals: '@', '_', a digit for the width, the size in bytes, a checksum, and up to 32 characters.

    SName StringLiteral()
    {
        const uint32 nBegin = m_nEnd;
        Expect("@_");
        const char cWidth = Next();
        if (cWidth != '0' && cWidth != '1')
            Fail();
        bool bNegative = false;
        uint64 nBytes = ReadNumber(bNegative);
        ReadToAt();
        Put(cWidth == '1' ? "L\"" : "\"");
        while (!Ended('@'))
        {
            uint32 nCharacter = LiteralByte();
            if (cWidth == '1')
                nCharacter = nCharacter << 8 | LiteralByte();
            const uint64 nWidth = static_cast<uint64>(cWidth - '0') + 1;
            if (nBytes < nWidth)
                return Fail(), SName{};
            nBytes -= nWidth;
            if (nBytes != 0 || nCharacter != 0)
                PutLiteral(nCharacter);
        }
        Put(nBytes == 0 ? "\"" : "\"...");
        return {SetAside(nBegin), EName::Complete};
    }

    uint8 LiteralByte()
    {
        const char c = Next();
        if (c != '?')
            return static_cast<uint8>(c);
        const char cCode = Next();
        if (IsDigit(cCode))
            return static_cast<uint8>(detail::kLiteralCharacters[cCode - '0']);
        if (cCode != '$')
            return static_cast<uint8>(cCode | 0x80);
        const char cHigh = Next();
        const char cLow = Next();
        if (!IsNibble(cHigh) || !IsNibble(cLow))
            Fail();
        return static_cast<uint8>((cHigh - 'A') << 4 | (cLow - 'A'));
    }

    void PutLiteral(uint32 nCharacter)
    {
        constexpr Text kEscaped = "\"\\\n\t\r\v\f\a\b";
        constexpr Text kEscapes = "\"\\ntrvfab";
        const char c = static_cast<char>(nCharacter);
        const size_t nEscape = nCharacter < 0x80 ? kEscaped.find(c) : Text::npos;
        if (nEscape != Text::npos)
        {
            Put("\\");
            Put(kEscapes.substr(nEscape, 1));
        }
        else if (nCharacter >= ' ' && nCharacter < 0x7F)
            Put(Text(&c, 1));
        else
        {
            Put("\\x");
            PutInteger(nCharacter, 16);
        }
    }

    // ---- Types.

    // Writes the type with what stands around it.
    void Type(const SAround* pAround)
    {
        const ZLevel level(*this);
        const char c = Next();
        switch (c)
        {
        case 'A':
        case 'B':
            return Pointer("&", static_cast<uint8>((c - 'A') * kVolatile), pAround);
        case 'P':
        case 'Q':
        case 'R':
        case 'S':
            return Pointer("*", static_cast<uint8>(c - 'P'), pAround);
        case 'T':
            return Class("union ", pAround);
        case 'U':
            return Class("struct ", pAround);
        case 'V':
            return Class("class ", pAround);
        case 'W':
            return Enum(pAround);
        case 'Y':
            return Array(pAround);
        case '?':
            return QualifiedType(pAround);
        case '$':
            return MoreTypes(pAround);
        case '_':
            return BasicType(detail::kMoreTypes[Next()], pAround);
        default:
            return BasicType(detail::kTypes[c], pAround);
        }
    }

    // Behind "$".
    void MoreTypes(const SAround* pAround)
    {
        if (Next() != '$')
            return Fail();
        switch (const char c = Next())
        {
        case 'A':
            return BareFunction(pAround);
        case 'B': // an array, whose code follows
            return Type(pAround);
        case 'C':
            return QualifiedType(pAround);
        case 'Q':
        case 'R':
            return Pointer("&&", static_cast<uint8>((c - 'Q') * kVolatile), pAround);
        case 'T':
            return BasicType("std::nullptr_t", pAround);
        case 'Y': // a template without arguments
            ScopeList();
            return PutBehind(pAround);
        default:
            return Fail();
        }
    }

    void BasicType(Text text, const SAround* pAround)
    {
        Put(Known(text));
        PutBehind(pAround);
    }

    void Class(Text keyword, const SAround* pAround)
    {
        PutVerbose(keyword);
        ScopeList();
        PutBehind(pAround);
    }

    // The digit is the type that it is stored in.
    void Enum(const SAround* pAround)
    {
        const char c = Next();
        if (c < '0' || c > '7')
            return Fail();
        ScopeList();
        PutBehind(pAround);
    }

    void Array(const SAround* pAround)
    {
        const uint32 nBegin = m_nEnd;
        bool bNegative = false;
        for (uint64 nBounds = ReadNumber(bNegative); nBounds > 0 && !m_bFailed; --nBounds)
        {
            Put("[");
            PutNumber();
            Put("]");
        }
        if (bNegative || nBegin == m_nEnd)
            return Fail();
        const SAround array{{}, 0, 0, SetAside(nBegin), pAround};
        Type(&array);
    }

    // A type with const and volatile of its own, which a pointer to it or an array of it would have spelled out.
    void QualifiedType(const SAround* pAround)
    {
        SAround around = pAround != nullptr ? *pAround : SAround{};
        around.m_targetCv = static_cast<uint8>(around.m_targetCv | (ReadCv() & kOfTarget));
        Type(&around);
    }

    void Pointer(Text mark, uint8 nCv, const SAround* pAround)
    {
        SAround pointer{mark, 0, nCv, {}, pAround};
        if (Consume('6'))
            return Function(0, &pointer);
        if (Consume('8'))
        {
            pointer.m_text = ClassName();
            return Function(ReadCv(), &pointer);
        }
        bool bMember = false;
        const uint8 nTarget = ReadCv(&bMember);
        pointer.m_targetCv = nTarget & kOfTarget;
        pointer.m_cv |= nTarget & kRestrict;
        if (bMember)
            pointer.m_text = ClassName();
        Type(&pointer);
    }

    // A function as a template argument: behind "$$A", as behind the "P" of a pointer.
    void BareFunction(const SAround* pAround)
    {
        if (Consume('6'))
            return Function(0, pAround);
        Expect("8@@");
        Function(ReadCv(), pAround);
    }

    // The return type, what stands around the function in parentheses, the parameters.
    void Function(uint8 nCv, const SAround* pAround)
    {
        ReadConvention();
        Type(nullptr);
        PutInParentheses(pAround);
        Signature(nCv);
    }

    // Behind a target that is no pointer: a const target says so here. A pointer that is const has said it itself.
    void PutBehind(const SAround* pAround)
    {
        if (pAround == nullptr)
            return;
        PutCv(pAround->m_targetCv);
        PutAround(pAround);
    }

    void PutAround(const SAround* pAround, bool bInParentheses = false)
    {
        for (; pAround != nullptr; pAround = pAround->m_pNext)
        {
            if (pAround->m_mark.empty())
            {
                PutInParentheses(pAround->m_pNext);
                return Put(pAround->m_text);
            }
            if (!pAround->m_text.empty())
            {
                if (!bInParentheses)
                    Put(" ");
                Put(pAround->m_text);
                Put("::");
            }
            Put(pAround->m_mark);
            PutCv(pAround->m_cv);
        }
    }

    // Behind a function or an array: a pointer to it needs the parentheses.
    void PutInParentheses(const SAround* pAround)
    {
        if (pAround == nullptr)
            return;
        PutCv(pAround->m_targetCv);
        if (pAround->m_mark.empty())
            return PutAround(pAround);
        Put("(");
        PutAround(pAround, true);
        Put(")");
    }

    // ---- Template arguments.

    void TemplateArguments()
    {
        const STenEntries types = m_types;
        const uint32 nAside = m_nAside;
        Put("<");
        for (bool bFirst = true; !Ended('@');)
        {
            if (Consume("$S") || Consume("$$V") || Consume("$$$V") || Consume("$$Z")) // the ends of packs
                continue;
            if (!bFirst)
                Put(", ");
            bFirst = false;
            TemplateArgument();
        }
        Put(">");
        m_types = types;
        m_nAside = nAside;
    }

    void TemplateArgument()
    {
        if (IsAt("$$") || !Consume('$'))
            return Type(nullptr);
        if (Consume('M')) // of the type that stands before it
        {
            const uint32 nBegin = m_nEnd;
            Type(nullptr);
            m_nEnd = nBegin;
        }
        Constant();
    }

    void Constant()
    {
        switch (const char c = Next())
        {
        case '0':
            return PutNumber();
        case '1':
            return Address();
        case 'E':
            return Symbol();
        case 'F':
        case 'G':
            return PutOffsets("{", c - 'F' + 2, "}");
        case 'H':
        case 'I':
        case 'J':
            Put("{");
            Address();
            return PutOffsets(", ", c - 'H' + 1, "}");
        default:
            return Fail();
        }
    }

    void Address()
    {
        Put("&");
        Symbol();
    }

    // ---- Functions and variables.

    // The parameters, const and volatile of "this", and the exception specification.
    void Signature(uint8 nCv)
    {
        Put("(");
        Parameters();
        Put(")");
        PutCv(nCv);
        if (Consume("_E"))
            Put(" noexcept");
        else
            Expect("Z");
    }

    void Parameters()
    {
        if (Consume('X'))
            return Put("void");
        bool bFirst = true;
        do
        {
            if (!bFirst)
                Put(", ");
            bFirst = false;
            if (Consume('Z'))
                return Put("...");
            Parameter();
        } while (!Ended('@'));
    }

    // The type table: the parameter types with codes of more than one character. The parameters of a pointer to a
    // function go in before the pointer; those inside of template arguments are a table of their own.
    void Parameter()
    {
        if (IsDigit(Peek()))
        {
            const Text* pType = m_types.Find(Next());
            return pType != nullptr ? Put(*pType) : Fail();
        }
        const char* pBegin = m_pRead;
        const uint32 nBegin = m_nEnd;
        Type(nullptr);
        if (m_pRead - pBegin > 1 && !m_types.IsFull())
            m_types.Add(Keep(nBegin));
    }

    void Symbol()
    {
        const ZLevel level(*this);
        Expect("?");
        const SName name = SymbolName();
        if (name.m_kind == EName::Complete)
            PutBack(name.m_text);
        else
            Encoding(name);
    }

    void Encoding(SName name)
    {
        static_cast<void>(Consume("$$F") || Consume("$$H") || Consume("$$J0")); // another language: not shown
        const char c = Next();
        if (c >= 'A' && c <= 'X')
            return MemberFunction(name, (c - 'A') / 8, (c - 'A') / 2 % 4);
        switch (c)
        {
        case '0':
        case '1':
        case '2':
        case '3':
        case '4':
            return Variable(name);
        case '5': // a guard, with its number
            AddOffsets(name, "{", 1, "}");
            return PutBack(name.m_text);
        case '6':
        case '7':
            return VirtualTable(name);
        case '8': // of run-time types
        case '9': // of a C function
            return PutBack(name.m_text);
        case 'Y':
        case 'Z':
            return FunctionSymbol(name, {}, false);
        case '$':
            return Thunk(name);
        default:
            return Fail();
        }
    }

    void MemberFunction(SName name, int nAccess, int nKind)
    {
        constexpr int kStatic = 1;
        constexpr int kAdjusting = 3;
        if (nKind == kAdjusting)
            AddOffsets(name, "'adjustor{", 1, "}'");
        FunctionSymbol(name, {nKind == kAdjusting ? kThunk : Text(), kAccess[nAccess], kMemberKinds[nKind]},
                       nKind != kStatic);
    }

    // Behind "$".
    void Thunk(SName name)
    {
        if (Consume('B'))
            return VirtualCall(name);
        const bool bExtended = Consume('R');
        const char c = Next();
        if (c < '0' || c > '5')
            return Fail();
        if (bExtended)
            AddOffsets(name, "'vtordispex{", 4, "}'");
        else
            AddOffsets(name, "'vtordisp{", 2, "}'");
        FunctionSymbol(name, {kThunk, kAccess[(c - '0') / 2], "virtual "}, true);
    }

    // The thunk behind a pointer to a virtual member function. It has no signature.
    void VirtualCall(SName name)
    {
        AddOffsets(name, "{", 1, "}");
        Expect("A");
        PutVerbose(ReadConvention());
        PutVerbose(kThunk);
        PutBack(name.m_text);
    }

    void AddOffsets(SName& name, Text before, int nCount, Text behind)
    {
        const uint32 nBegin = m_nEnd;
        PutBack(name.m_text);
        PutOffsets(before, nCount, behind);
        name.m_text = SetAside(nBegin);
    }

    void FunctionSymbol(const SName& name, const SAccess& access, bool bThis)
    {
        const uint8 nCv = bThis ? ReadCv() : uint8{0};
        const Text convention = ReadConvention();
        const uint32 nBegin = m_nEnd;
        Text converted;
        if (!Consume('@')) // which only constructors and destructors have
        {
            Type(nullptr);
            if (name.m_kind == EName::Conversion)
                converted = SetAside(nBegin);
            else
                Put(" ");
        }
        PutVerbose(convention);
        PutVerbose(access.m_thunk);
        PutVerbose(access.m_access);
        PutVerbose(access.m_kind);
        PutBack(name.m_text);
        if (!converted.empty())
        {
            Put(" ");
            PutBack(converted);
        }
        Signature(nCv);
    }

    // What stands behind the type is said by the type already, and is not written.
    void Variable(const SName& name)
    {
        Type(nullptr);
        Put(" ");
        bool bMember = false;
        ReadCv(&bMember);
        if (bMember)
            ClassName();
        PutBack(name.m_text);
    }

    // The bases whose table it is, of several.
    void VirtualTable(const SName& name)
    {
        ReadCv();
        PutBack(name.m_text);
        Text before = "{for '";
        for (; !Ended('@'); before = ", '")
        {
            Put(before);
            ScopeList();
            Put("'");
        }
        if (before.front() == ',')
            Put("}");
    }

    const char* m_pRead;
    const char* const m_pEnd;
    const bool m_bVerbose;
    bool m_bFailed = false;
    uint32 m_nDepth = 0;
    uint32 m_nEnd = 0;
    uint32 m_nAside = kTextSize;
    STenEntries m_names;
    STenEntries m_types;
    char m_acText[kTextSize]; // stays unwritten but for the texts
};
} // namespace

void demangle(ZStackStringBase& out, const char* mangled, bool verbose)
{
    demangle(out, detail::TextOf(mangled), verbose);
}

void demangle(ZStackStringBase& out, std::string_view mangled, bool verbose)
{
    if (!mangled.starts_with('?'))
    {
        mangled.remove_prefix(mangled.starts_with('_') ? 1 : 0);
        return out.append(mangled);
    }
    ZDemangler demangler(mangled, verbose);
    out.append(demangler.Run() ? demangler.Result() : mangled);
}
