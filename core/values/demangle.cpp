#include "core/values/demangle.h"
#include "core/values/demanglecodes.h"
#include "core/values/demangletext.h"

#include <algorithm>
#include <span>

// The grammar, where "-" is a list, (x) an option and CODE a code of the tables:
//
//   symbol      ? name encoding
//   name        component scopes                     "a@b@c@@" is c::b::a
//             | ?0 scopes | ?1 scopes                constructor, destructor
//             | ?CODE scopes                         operators, and what has no name of its own
//   scopes      component- @
//   component   text @ | digit                       a name; an entry of the name table
//             | ?$ text @ argument- @                a template; also ?$? and the code of an operator
//             | ?A0x text @ | ?number | ?symbol      anonymous namespace, block of a function, the function
//   encoding    A...X (number) (cv) function         member functions: four kinds each for three kinds of access
//             | Y function                           global functions
//             | 0...4 type cv                        variables
//             | 5 number | 6 cv name- @ | 8 | 9      guards, tables, run-time types, C functions
//             | $ ...                                thunks
//   function    convention type parameters Z
//   parameters  X | parameter- @ | parameter- Z      none, a list, a list with "..."
//   parameter   type | digit                         an entry of the type table
//   type        CODE | ?< text @ scopes            "?<auto>@@" is a deduced return type
//             | U scopes | V scopes | W4 scopes      classes, enums
//             | P cv type | A cv type                pointers, references; Q, R, S, B with a cv of their own
//             | P6 function | P8 scopes cv function
//             | Y number number- type                arrays
//   argument    type | $ value | $M type value
//   value       0 number | 1 symbol | ...          also objects, with their types and the values of their members
//   cv          A | B | C | D                        nothing, const, volatile, both; Q to T for members
//   number      digit | nibble- @                    with a leading "?" if it is negative

namespace
{
using Text = std::string_view;

// const, volatile and the other qualifiers in their place. The lowest two bits are the letters A to D.
enum ECv : uint8
{
    kConst = 1,
    kVolatile = 2,
    kUnaligned = 4,
    kRestrict = 8,
    kLeftReference = 16,
    kRightReference = 32,
};

// One step of a declarator, from the inside out. The symbol has it before the type, the output after the type.
struct SDeclarator
{
    Text m_mark;                // of a pointer or reference; empty for an array
    uint8 m_targetCv;           // of what it points to, or consists of
    uint8 m_cv;                 // its own
    Text m_text;                // the class of a pointer to members; the bounds of an array
    const SDeclarator* m_pNext; // for example, a pointer to this pointer
};

struct SName
{
    enum ENameKind : uint8
    {
        kPlain,
        kConstructor,
        kDestructor,
        kConversion, // the type is missing
        kUnscoped,   // no scopes follow
        kSymbol,     // nothing follows
    };

    Text m_text;
    ENameKind m_kind = kPlain;
    bool m_bTemplate = false;
};

// The functions of the grammar. Each reads its piece of the symbol and writes the output for it.
class ZDemangler : public kx::detail::ZDemangleText
{
public:
    ZDemangler(Text symbol, const SDemangleOptions& options, std::span<char> memory)
        : ZDemangleText(symbol, memory),
          m_bVerbose(options.m_bVerbose),
          m_bModern(options.m_bModern),
          m_nMaxLevel(m_bModern ? UINT32_MAX : kMaxLevel),
          m_nLowestStack(m_bModern ? LowestStack(options.m_nStack) : 0)
    {
    }

    // Whether the symbol was not read because it needs more memory or stack than there is.
    bool IsTooLarge() const { return m_bTooDeep || IsTextFull(); }

    KX_NOINLINE void Symbol()
    {
        const ZLevel level(*this);
        Expect("?");
        const SName name = SymbolName();
        if (name.m_kind == SName::kSymbol)
            Unstash(name.m_text);
        else
            Encoding(name);
    }

    // What compilers and linkers append to a copy or a part of a function: ".cold", ".llvm.123".
    void Suffix()
    {
        const Text suffix = Rest();
        const auto isPart = [](char c)
        { return IsDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == '.' || c == '$'; };
        if (suffix.size() < 2 || (suffix[0] != '.' && suffix[0] != '$')
            || !std::all_of(suffix.begin(), suffix.end(), isPart))
            return;
        Expect(suffix);
        Put(" [");
        Put(suffix);
        Put("]");
    }

private:
    // A level of nesting takes up to 550 bytes of stack. The functions involved are not inlined, because each would add
    // its variables to the stack frames of all the others.
    class ZLevel
    {
    public:
        explicit ZLevel(ZDemangler& demangler) : m_demangler(demangler)
        {
            if (++m_demangler.m_nLevel > m_demangler.m_nMaxLevel
                || kx::detail::AddressOf(this) < m_demangler.m_nLowestStack)
                m_demangler.FailTooDeep();
        }
        ZLevel(const ZLevel&) = delete;
        ZLevel& operator=(const ZLevel&) = delete;
        ~ZLevel() { --m_demangler.m_nLevel; }

    private:
        ZDemangler& m_demangler;
    };

    // The stack grows down. What the functions take below the last level that is checked is left for them.
    std::uintptr_t LowestStack(uint32 nBytes) const
    {
        constexpr uint32 kBelowLastLevel = 4096;
        const std::uintptr_t nHere = kx::detail::AddressOf(this);
        return nHere - std::min<std::uintptr_t>(nHere, std::max(nBytes, kBelowLastLevel) - kBelowLastLevel);
    }

    void FailTooDeep()
    {
        m_bTooDeep = m_bTooDeep || !HasFailed();
        Fail();
    }

    void PutVerbose(Text text)
    {
        if (m_bVerbose)
            Put(text);
    }

    void PutNumber()
    {
        const SNumber number = ReadNumber();
        if (number.m_bNegative)
            Put("-");
        PutInteger(number.m_nMagnitude);
    }

    // Writes signed 32-bit numbers, however they are spelled.
    void PutOffsets(Text before, int nCount, Text after)
    {
        Put(before);
        for (int i = 0; i < nCount; ++i)
        {
            if (i > 0)
                Put(", ");
            const SNumber number = ReadNumber();
            PutInteger(static_cast<int32>(number.m_bNegative ? 0 - number.m_nMagnitude : number.m_nMagnitude));
        }
        Put(after);
    }

    // ---- Names.

    // Reads the name of a symbol and stashes it.
    SName SymbolName()
    {
        const uint32 nBegin = End();
        SName name = FirstComponent();
        const char* pScopes = Position();
        const uint32 nNames = m_names.Size();
        if (name.m_kind == SName::kConstructor || name.m_kind == SName::kDestructor)
        {
            const uint32 nClass = Scopes(Component());
            const Text className = WrittenSince(nClass);
            Put(name.m_kind == SName::kDestructor ? "::~" : "::");
            Put(className);
            Put(name.m_text);
        }
        else if (name.m_kind == SName::kPlain || name.m_kind == SName::kConversion)
            Scopes(name.m_text);
        else
            Unstash(name.m_text);
        if (m_bModern && name.m_bTemplate && Peek() >= '0' && Peek() <= '4')
            EnterVariable(name.m_text, pScopes, nNames, nBegin);
        name.m_text = Stash(nBegin);
        return name;
    }

    // Current encoders enter the template of a variable in the name table, and not that of a function. Which of them it
    // is follows after the scopes. If these refer to the table, they are read again with the entry. That is done a few
    // times only, so that it cannot double the time at each level.
    void EnterVariable(Text name, const char* pScopes, uint32 nNames, uint32 nBegin)
    {
        const std::string_view scopes(pScopes, static_cast<size_t>(Position() - pScopes));
        if (std::none_of(scopes.begin(), scopes.end(), IsDigit) || m_nReread == kMaxReread)
            return m_names.Insert(nNames, name);
        ++m_nReread;
        m_names.Shrink(nNames);
        m_names.Add(name);
        Drop(nBegin);
        Reread(pScopes);
        Scopes(name);
    }

    SName FirstComponent()
    {
        if (!Consume('?'))
            return {PlainName()};
        return Consume('$') ? Template() : Operator();
    }

    // Writes the scopes, which follow the component in the symbol, then the component. Returns where that begins.
    uint32 Scopes(Text component)
    {
        const ZLevel level(*this);
        if (!ConsumeEnd('@'))
        {
            Scopes(Component());
            Put("::");
        }
        const uint32 nBegin = End();
        Unstash(component);
        return nBegin;
    }

    void ScopedName() { Scopes(Component()); }

    Text StashScopedName()
    {
        const uint32 nBegin = End();
        ScopedName();
        return Stash(nBegin);
    }

    Text Component()
    {
        if (!Consume('?'))
            return PlainName();
        if (Consume('$'))
        {
            const SName name = Template();
            if (m_bModern)
                m_names.Add(name.m_text);
            return name.m_kind == SName::kPlain ? name.m_text : (Fail(), Text());
        }
        if (Consume("A0x")) // first, because it could be the beginning of a number
            return AnonymousNamespace(ReadToAt());

        const uint32 nBegin = End();
        Put("'");
        if (IsAt("?"))
            Symbol();
        else
            Block();
        Put("'");
        return Stash(nBegin);
    }

    // One of the current encoders enters such namespaces in the name table. It writes their number in lower case. The
    // other one writes it in upper case and spells it out each time.
    Text AnonymousNamespace(Text number)
    {
        constexpr Text kName = "'anonymous namespace'";
        const bool bEnter = std::none_of(number.begin(), number.end(), [](char c) { return c >= 'A' && c <= 'F'; });
        if (m_bModern && bEnter && !m_names.Contains(kName))
            m_names.Add(kName);
        return kName;
    }

    // The name table has the plain names in the order in which they are first read. There is one for the whole symbol,
    // but the encoder has one for each template. So after a template, a digit can mean another name than the encoder
    // meant. The output for such symbols is known in this form, so it stays that way.
    Text PlainName()
    {
        if (IsDigit(Peek()))
            return Known(m_names[Next()]);
        const Text name = ReadToAt();
        if (!m_names.IsFull() && !m_names.Contains(name))
            m_names.Add(name);
        return name;
    }

    // Writes the number of a block. The modern form has it in decimal. In the other one, this is so for a number of one
    // digit; one in letters is written plus 1, in hexadecimal. So both "?9" and "?P@" read 10.
    void Block()
    {
        if (IsDigit(Peek()))
            return PutNumber();
        const uint64 nNumber = Consume('@') ? 0 : ReadNumber().m_nMagnitude;
        if (m_bModern)
            return PutInteger(nNumber);
        const uint64 nBlock = nNumber + 1;
        if (nBlock == 0)
            Fail();
        int nShift = 60;
        while (nShift > 0 && nBlock >> nShift == 0)
            nShift -= 4;
        for (; nShift >= 0; nShift -= 4)
            PutNibble(nBlock >> nShift);
    }

    void PutNibble(uint64 nDigits) { Put(Text("0123456789ABCDEF").substr(nDigits & 15, 1)); }

    // After "?$".
    SName Template()
    {
        if (m_bModern)
            return TemplateWithTables();
        const uint32 nTypes = m_types.Size();
        const SMark mark = StashMark();
        const uint32 nBegin = End();
        SName name = TemplateName();
        m_types.Shrink(nTypes);
        ReleaseStash(mark);
        name.m_text = Stash(nBegin);
        return name;
    }

    // Current encoders begin new tables for each template. The template itself then is one entry of the outer table, so
    // its text is kept.
    KX_NOINLINE SName TemplateWithTables()
    {
        const SMark mark = StashMark();
        const Text names = SetAside(m_names);
        const Text types = SetAside(m_types);
        const uint32 nBegin = End();
        SName name = TemplateName();
        m_names.Restore(names);
        m_types.Restore(types);
        ReleaseStash(mark);
        name.m_text = Stash(nBegin);
        name.m_bTemplate = true;
        KeepStash();
        return name;
    }

    // Writes the name and the arguments.
    KX_NOINLINE SName TemplateName()
    {
        SName name = Consume('?') ? Operator() : SName{PlainName()};
        if (name.m_kind == SName::kUnscoped || name.m_kind == SName::kSymbol)
            Fail();
        Unstash(name.m_text);
        TemplateArguments();
        return name;
    }

    // After "?".
    SName Operator()
    {
        const char c = Next();
        if (c == '_')
            return SpecialOperator();
        if (c == '0' || c == '1')
            return {{}, c == '0' ? SName::kConstructor : SName::kDestructor};
        return {Known(kx::detail::kOperators[c]), c == 'B' ? SName::kConversion : SName::kPlain};
    }

    // After "?_".
    SName SpecialOperator()
    {
        const char c = Next();
        if (c == '_')
            return RareOperator();
        if (c == 'C')
            return StringLiteral();
        return {c == 'R' ? RunTimeType() : Known(kx::detail::kSpecialOperators[c])};
    }

    // After "?__".
    SName RareOperator()
    {
        const char c = Next();
        if (c == 'E')
            return Lifetime("'dynamic initializer for '");
        if (c == 'F')
            return Lifetime("'dynamic atexit destructor for '");
        return {c == 'K' ? LiteralOperator() : Known(kx::detail::kRareOperators[c])};
    }

    // The function that initialises or destroys a variable. The variable has its name here, or its whole symbol. An old
    // encoder wrote the symbol without its "?" and with one "@" at the end.
    SName Lifetime(Text before)
    {
        const uint32 nBegin = End();
        Put(before);
        if (!IsAt("?") || IsAt("?$"))
        {
            const uint32 nName = End();
            ScopedName();
            if (IsDigit(Peek()))
            {
                Encoding({Stash(nName)});
                Expect("@");
            }
        }
        else
        {
            Symbol();
            Expect("@@");
        }
        Put("''");
        return {Stash(nBegin), SName::kUnscoped};
    }

    // The suffix of the operator does not enter the name table.
    Text LiteralOperator()
    {
        const uint32 nBegin = End();
        Put("operator\"\"");
        Put(ReadToAt());
        return Stash(nBegin);
    }

    // After "?_R".
    Text RunTimeType()
    {
        const uint32 nBegin = End();
        const char c = Next();
        if (c == '0')
        {
            Type();
            Put(" 'RTTI Type Descriptor'");
        }
        else if (c == '1')
            PutOffsets("'RTTI Base Class Descriptor at (", 4, ")'");
        else
            return Known(kx::detail::kRunTimeTypes[c]);
        return Stash(nBegin);
    }

    // After "?_C": "@_", the kind, the size in bytes, a checksum, and the characters, up to 32 of them. A longer
    // literal ends with dots in the output.
    SName StringLiteral()
    {
        const uint32 nBegin = End();
        Expect("@_");
        const bool bWide = Consume('1');
        if (!bWide)
            Expect("0");
        const uint64 nSize = ReadNumber().m_nMagnitude;
        ReadToAt();
        while (!ConsumeEnd('@'))
        {
            const char c = LiteralByte();
            Put(Text(&c, 1));
        }
        const Text bytes = Stash(nBegin);
        const uint32 nWidth = bWide ? 2 : WidthOf(bytes, nSize);
        if (bytes.size() > nSize || bytes.size() % nWidth != 0)
            return Fail(), SName();
        Put(bWide ? "L\"" : nWidth == 1 ? "\"" : nWidth == 2 ? "u\"" : "U\"");
        size_t nEnd = bytes.size();
        if (nEnd == nSize && nEnd != 0 && UnitAt(bytes, nEnd - nWidth, nWidth) == 0)
            nEnd -= nWidth; // the terminator
        for (size_t i = 0; i < nEnd && !HasFailed(); i += nWidth)
            PutCharacter(UnitAt(bytes, i, nWidth, bWide), nWidth);
        Put(bytes.size() == nSize ? "\"" : "\"...");
        return {Stash(nBegin), SName::kSymbol};
    }

    // wchar_t has its high byte first, the other types have it last.
    static uint32 UnitAt(Text bytes, size_t nAt, uint32 nWidth, bool bHighFirst = false)
    {
        uint32 nUnit = 0;
        for (uint32 i = 0; i < nWidth; ++i)
            nUnit = nUnit << 8 | static_cast<uint8>(bytes[nAt + (bHighFirst ? i : nWidth - 1 - i)]);
        return nUnit;
    }

    // The symbol does not tell char16_t and char32_t from char, so this is a guess from the bytes. char32_t has only
    // valid code points. In text in char16_t, half of the characters are below 0x100, or bytes are beyond ASCII. Each
    // ends with a terminator of its size.
    static uint32 WidthOf(Text bytes, uint64 nSize)
    {
        for (const uint32 nWidth : {4u, 2u})
        {
            if (bytes.empty() || nSize % nWidth != 0 || bytes.size() % nWidth != 0)
                continue;
            const bool bComplete = bytes.size() == nSize;
            const size_t nEnd = bytes.size() - (bComplete ? nWidth : 0);
            size_t nSmall = 0;
            for (size_t i = 0; i < nEnd; i += nWidth)
                nSmall += UnitAt(bytes, i, nWidth) < (nWidth == 4 ? 0x110000u : 0x100u) ? nWidth : 0;
            const auto isBeyondAscii = [](char c) { return static_cast<uint8>(c) >= 0x80; };
            const bool bText =
                nWidth == 4
                    ? nSmall == nEnd
                    : nSmall * 2 >= nEnd || (bComplete && std::any_of(bytes.begin(), bytes.end(), isBeyondAscii));
            if (bText && (!bComplete || UnitAt(bytes, nEnd, nWidth) == 0))
                return nWidth;
        }
        return 1;
    }

    // A letter after "?" means itself with the top bit set.
    char LiteralByte()
    {
        const char c = Next();
        if (c != '?')
            return c;
        const char cCode = Next();
        if (IsDigit(cCode))
            return kx::detail::kLiteralCharacters[cCode - '0'];
        if (cCode != '$')
            return static_cast<char>(cCode | 0x80);
        const char cHigh = Next();
        const char cLow = Next();
        if (!IsNibble(cHigh) || !IsNibble(cLow))
            Fail();
        return static_cast<char>((cHigh - 'A') << 4 | (cLow - 'A'));
    }

    // An escape has all digits of its character, so that it cannot be taken for another one with the characters that
    // follow it.
    void PutCharacter(uint32 nCharacter, uint32 nWidth)
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
            for (uint32 nShift = nWidth * 8; nShift != 0; nShift -= 4)
                PutNibble(nCharacter >> (nShift - 4));
        }
    }

    // ---- Types. Each function writes a type and its declarator.

    void Type(const SDeclarator* pDeclarator = nullptr)
    {
        const ZLevel level(*this);
        const char c = Next();
        switch (c)
        {
        case 'A':
        case 'B':
            return Pointer("&", static_cast<uint8>((c - 'A') * kVolatile), pDeclarator);
        case 'P':
        case 'Q':
        case 'R':
        case 'S':
            return Pointer("*", static_cast<uint8>(c - 'P'), pDeclarator);
        case 'T':
            return Class("union ", pDeclarator);
        case 'U':
            return Class("struct ", pDeclarator);
        case 'V':
            return Class("class ", pDeclarator);
        case 'W':
            return Enum(pDeclarator);
        case 'Y':
            return Array(pDeclarator);
        case '?':
            // A deduced type is a name, of which no other type begins like this.
            return IsAt("<") || IsDigit(Peek()) ? Class({}, pDeclarator) : QualifiedType(pDeclarator);
        case '$':
            return DollarType(pDeclarator);
        case '_':
            return BasicType(kx::detail::kExtendedTypes[Next()], pDeclarator);
        default:
            return BasicType(kx::detail::kTypes[c], pDeclarator);
        }
    }

    // After "$".
    KX_NOINLINE void DollarType(const SDeclarator* pDeclarator)
    {
        Expect("$");
        const char c = Next();
        switch (c)
        {
        case 'A':
            return BareFunction(pDeclarator);
        case 'B': // an array, whose code follows
            return Type(pDeclarator);
        case 'C':
            return QualifiedType(pDeclarator);
        case 'Q':
        case 'R':
            return Pointer("&&", static_cast<uint8>((c - 'Q') * kVolatile), pDeclarator);
        case 'T':
            return BasicType("std::nullptr_t", pDeclarator);
        case 'Y': // a template without arguments
            return Class({}, pDeclarator);
        default:
            return Fail();
        }
    }

    void BasicType(Text text, const SDeclarator* pDeclarator)
    {
        Put(Known(text));
        PutAfter(pDeclarator);
    }

    void Class(Text keyword, const SDeclarator* pDeclarator)
    {
        PutVerbose(keyword);
        ScopedName();
        PutAfter(pDeclarator);
    }

    // The digit is the underlying type. The output never has the keyword enum.
    void Enum(const SDeclarator* pDeclarator)
    {
        const char c = Next();
        if (c < '0' || c > '7')
            Fail();
        Class({}, pDeclarator);
    }

    KX_NOINLINE void Array(const SDeclarator* pDeclarator)
    {
        const uint32 nBegin = End();
        SNumber bounds = ReadNumber();
        if (bounds.m_bNegative || bounds.m_nMagnitude == 0)
            Fail();
        for (; bounds.m_nMagnitude > 0 && !HasFailed(); --bounds.m_nMagnitude)
        {
            Put("[");
            const uint64 nBound = ReadNumber().m_nMagnitude;
            if (nBound != 0) // otherwise it is not known
                PutInteger(nBound);
            Put("]");
        }
        const SDeclarator array{{}, 0, 0, Stash(nBegin), pDeclarator};
        Type(&array);
    }

    // A type with a cv of its own. A pointer to it or an array of it would have spelled out the cv.
    KX_NOINLINE void QualifiedType(const SDeclarator* pDeclarator)
    {
        SDeclarator declarator = pDeclarator != nullptr ? *pDeclarator : SDeclarator{};
        declarator.m_targetCv = TargetCv(ReadCv(), declarator.m_targetCv);
        Type(&declarator);
    }

    KX_NOINLINE void Pointer(Text mark, uint8 nCv, const SDeclarator* pDeclarator)
    {
        // A pointer that is a target has const and volatile in its own code, but not __unaligned.
        if (pDeclarator != nullptr)
            nCv |= pDeclarator->m_targetCv & kUnaligned;
        SDeclarator pointer{mark, 0, nCv, {}, pDeclarator};
        if (Consume('6'))
            return Function(0, &pointer);
        if (Consume('8'))
        {
            pointer.m_text = StashScopedName();
            return Function(ReadCv(), &pointer);
        }
        bool bMember = false;
        const uint8 nTarget = ReadCv(&bMember);
        pointer.m_targetCv = TargetCv(nTarget);
        pointer.m_cv |= nTarget & kRestrict;
        if (bMember)
            pointer.m_text = StashScopedName();
        Type(&pointer);
    }

    // A function as a template argument.
    void BareFunction(const SDeclarator* pDeclarator)
    {
        if (Consume('6'))
            return Function(0, pDeclarator);
        Expect("8@@");
        Function(ReadCv(), pDeclarator);
    }

    // The output omits the calling convention.
    KX_NOINLINE void Function(uint8 nCv, const SDeclarator* pDeclarator)
    {
        ReadConvention();
        Type();
        PutInParentheses(pDeclarator);
        Signature(nCv);
    }

    Text ReadConvention() { return Known(kx::detail::kConventions[Next()]); }

    // Marks come before the letter, in any order. E, the mark of 64-bit pointers, is not written.
    uint8 ReadCv(bool* pMember = nullptr)
    {
        uint8 nCv = 0;
        for (;;)
        {
            const char c = Next();
            if (c >= 'A' && c <= 'D')
                return static_cast<uint8>(nCv | (c - 'A'));
            if (c >= 'E' && c <= 'I')
            {
                constexpr uint8 kMarks[] = {0, kUnaligned, kLeftReference, kRightReference, kRestrict};
                nCv |= kMarks[c - 'E'];
                continue;
            }
            if (c < 'Q' || c > 'T' || pMember == nullptr)
                return Fail(), uint8{0};
            *pMember = true;
            return static_cast<uint8>(nCv | (c - 'Q'));
        }
    }

    static uint8 TargetCv(uint8 nCv, uint8 nMore = 0)
    {
        return static_cast<uint8>((nCv & (kConst | kVolatile | kUnaligned)) | nMore);
    }

    void PutCv(uint8 nCv)
    {
        constexpr Text kTexts[] = {" const", " volatile", " __unaligned", " __restrict", "&", "&&"};
        for (const Text* pText = kTexts; nCv != 0; nCv >>= 1, ++pText)
        {
            if ((nCv & 1) != 0)
                Put(*pText);
        }
    }

    // After a target that is not a pointer. The cv of the target is written here; a pointer has already written its
    // own.
    void PutAfter(const SDeclarator* pDeclarator)
    {
        if (pDeclarator == nullptr)
            return;
        PutCv(pDeclarator->m_targetCv);
        PutDeclarators(pDeclarator, " ");
    }

    // After a function or an array: a pointer to it is in parentheses.
    void PutInParentheses(const SDeclarator* pDeclarator, uint8 nWritten = 0)
    {
        if (pDeclarator == nullptr)
            return;
        if (kx::detail::AddressOf(&pDeclarator) < m_nLowestStack) // an array of arrays nests here without a level
            return FailTooDeep();
        PutCv(static_cast<uint8>(pDeclarator->m_targetCv & ~nWritten));
        if (pDeclarator->m_mark.empty())
            return PutDeclarators(pDeclarator, {});
        Put("(");
        PutDeclarators(pDeclarator, {});
        Put(")");
    }

    void PutDeclarators(const SDeclarator* pDeclarator, Text beforeClass)
    {
        Text before = beforeClass;
        uint8 nCv = 0;
        for (; pDeclarator != nullptr; pDeclarator = pDeclarator->m_pNext)
        {
            if (pDeclarator->m_mark.empty())
            {
                PutInParentheses(pDeclarator->m_pNext, nCv); // the elements are pointers, with a cv of their own
                return Unstash(pDeclarator->m_text);
            }
            if (!pDeclarator->m_text.empty())
            {
                Put(before);
                Unstash(pDeclarator->m_text);
                Put("::");
            }
            Put(pDeclarator->m_mark);
            nCv = pDeclarator->m_cv;
            PutCv(nCv);
            before = nCv != 0 ? Text(" ") : beforeClass;
        }
    }

    // ---- Template arguments.

    // The parameters of functions in template arguments are entered in the type table until the arguments end.
    void TemplateArguments()
    {
        Put("<");
        for (bool bFirst = true; !ConsumeEnd('@');)
        {
            if (Consume("$S") || Consume("$$V") || Consume("$$$V") || Consume("$$Z")) // the end of a pack
                continue;
            if (!bFirst)
                Put(", ");
            bFirst = false;
            TemplateArgument();
        }
        Put(">");
    }

    void TemplateArgument()
    {
        if (IsAt("$$") || !Consume('$'))
            return Type();
        if (Consume('M'))
            SkipType();
        Value();
    }

    // The output has the type of an object, and not that of a number or an address.
    void SkipType()
    {
        const uint32 nBegin = End();
        Type();
        Drop(nBegin);
    }

    KX_NOINLINE void Value()
    {
        const char c = Next();
        switch (c)
        {
        case '0':
            return PutNumber();
        case '1':
            return Address();
        case '2':
            return Object();
        case '3':
            return Elements();
        case '7':
            return Alternative();
        case 'E': // a reference
            return Symbol();
        case 'F': // a pointer to a member, as the compiler stores it
        case 'G':
            return PutOffsets("{", c - 'F' + 2, "}");
        case 'H':
        case 'I':
        case 'J':
            Put("{");
            if (!IsAt("?")) // a null pointer has no function
                return PutOffsets({}, c - 'H' + 1, "}");
            Address();
            return PutOffsets(", ", c - 'H' + 1, "}");
        default:
            return Fail();
        }
    }

    // An object of a class: its type and the values of its bases and members.
    KX_NOINLINE void Object()
    {
        const ZLevel level(*this);
        Type();
        Put("{");
        for (Text before; !ConsumeEnd('@'); before = ", ")
        {
            Put(before);
            if (!IsAt("2") && !IsAt("3") && !IsAt("7"))
                SkipType();
            Value();
        }
        Put("}");
    }

    KX_NOINLINE void Elements()
    {
        const ZLevel level(*this);
        SkipType();
        Put("{");
        for (Text before; !ConsumeEnd('@'); before = ", ")
        {
            Put(before);
            Value();
            Expect("@");
        }
        Put("}");
    }

    // An object of a union: its type, and the member that it holds, if any.
    KX_NOINLINE void Alternative()
    {
        const ZLevel level(*this);
        Type();
        Put("{");
        if (!ConsumeEnd('@'))
        {
            Put(".");
            Put(PlainName());
            Put(" = ");
            Value();
            Expect("@");
        }
        Put("}");
    }

    void Address()
    {
        Put("&");
        Symbol();
    }

    // ---- Functions and variables.

    void Encoding(SName name)
    {
        if (Consume("$$")) // the mark of another language, which is not written
        {
            if (!Consume('F') && !Consume('H'))
                Expect("J0");
        }
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
        case '5': // the number of a guard
            AddOffsets(name, "{", 1, "}");
            return Unstash(name.m_text);
        case '6':
        case '7':
            return Table(name);
        case '8':
        case '9':
            return Unstash(name.m_text);
        case 'Y':
        case 'Z':
            return FunctionSymbol(name, {}, false);
        case '$':
            return Thunk(name);
        default:
            return Fail();
        }
    }

    // The code is even for near functions and odd for far ones. Both read the same.
    void MemberFunction(SName name, int nAccess, int nKind)
    {
        if (nKind == kAdjusting)
            AddOffsets(name, "'adjustor{", 1, "}'");
        const Text prefixes[] = {nKind == kAdjusting ? kThunk : Text(), kAccess[nAccess], kKinds[nKind]};
        FunctionSymbol(name, prefixes, nKind != kStatic);
    }

    // After "$": thunks for virtual functions that find the object through a table, with two offsets or four.
    void Thunk(SName name)
    {
        if (Consume('B'))
            return VirtualCall(name);
        const bool bExtended = Consume('R');
        const char c = Next();
        if (c < '0' || c > '5')
            return Fail();
        AddOffsets(name, bExtended ? "'vtordispex{" : "'vtordisp{", bExtended ? 4 : 2, "}'");
        const Text prefixes[] = {kThunk, kAccess[(c - '0') / 2], kKinds[kVirtual]};
        FunctionSymbol(name, prefixes, true);
    }

    // The target of a pointer to a virtual member function. It has no signature.
    void VirtualCall(SName name)
    {
        AddOffsets(name, "{", 1, "}");
        Expect("A");
        PutVerbose(ReadConvention());
        PutVerbose(kThunk);
        Unstash(name.m_text);
    }

    void AddOffsets(SName& name, Text before, int nCount, Text after)
    {
        const uint32 nBegin = End();
        Unstash(name.m_text);
        PutOffsets(before, nCount, after);
        name.m_text = Stash(nBegin);
    }

    // Only the verbose form has the prefixes and the calling convention.
    void FunctionSymbol(const SName& name, std::span<const Text> prefixes, bool bHasThis)
    {
        const uint8 nCv = bHasThis ? ReadCv() : uint8{0};
        const Text convention = ReadConvention();
        const uint32 nBegin = End();
        Text converted;
        if (!Consume('@')) // constructors and destructors return nothing
        {
            Type();
            if (name.m_kind == SName::kConversion)
                converted = Stash(nBegin);
            else
                Put(" ");
        }
        PutVerbose(convention);
        for (const Text prefix : prefixes)
            PutVerbose(prefix);
        Unstash(name.m_text);
        if (!converted.empty())
        {
            Put(" ");
            Unstash(converted);
        }
        Signature(nCv);
    }

    // The cv after the type is that of the variable. For a pointer, it repeats that of its target. It is not written,
    // so the output does not say that a variable is const.
    void Variable(const SName& name)
    {
        Type();
        Put(" ");
        bool bMember = false;
        ReadCv(&bMember);
        if (bMember)
            StashScopedName();
        Unstash(name.m_text);
    }

    // A class with several bases has several tables, each with the name of its base.
    void Table(const SName& name)
    {
        ReadCv();
        Unstash(name.m_text);
        if (ConsumeEnd('@'))
            return;
        Text before = "{for '";
        do
        {
            Put(before);
            ScopedName();
            Put("'");
            before = ", '";
        } while (!ConsumeEnd('@'));
        Put("}");
    }

    // The parameters, the cv of "this", and whether the function is noexcept.
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
        Text before;
        do
        {
            Put(before);
            before = ", ";
            if (Consume('Z'))
                return Put("...");
            Parameter();
        } while (!ConsumeEnd('@'));
    }

    // The type table has the parameter types whose codes have more than one character. The parameters of a pointer to a
    // function are entered in the same table, before the pointer.
    void Parameter()
    {
        if (IsDigit(Peek()))
            return Put(Known(m_types[Next()]));
        const char* pBegin = Position();
        const uint32 nBegin = End();
        Type();
        if (Position() - pBegin > 1 && !m_types.IsFull())
            m_types.Add(StashCopy(nBegin));
    }

    enum EFunctionKind : uint8
    {
        kStatic = 1,
        kVirtual = 2,
        kAdjusting = 3,
    };

    static constexpr Text kThunk = "[thunk]: ";
    static constexpr Text kAccess[] = {"privat: ", "protected: ", "public: "}; // the established spelling
    static constexpr Text kKinds[] = {"", "static ", "virtual ", "virtual "};

    static constexpr uint32 kMaxLevel = 128;
    static constexpr uint32 kMaxReread = 8;

    const bool m_bVerbose;
    const bool m_bModern;
    bool m_bTooDeep = false;
    uint32 m_nReread = 0;
    uint32 m_nLevel = 0;
    const uint32 m_nMaxLevel;
    const std::uintptr_t m_nLowestStack;
    kx::detail::ZBackReferences m_names;
    kx::detail::ZBackReferences m_types;
};

// Reads the symbol in memory of its own.
template <class TUse>
KX_NOINLINE void ReadInOwnMemory(Text symbol, const SDemangleOptions& options, TUse use)
{
    char acMemory[32 * 1024];
    ZDemangler demangler(symbol, options, acMemory);
    demangler.Symbol();
    demangler.Suffix();
    use(demangler);
}

template <class TUse>
void Read(Text symbol, const SDemangleOptions& options, TUse use)
{
    if (options.m_memory.empty())
        return ReadInOwnMemory(symbol, options, use);
    ZDemangler demangler(symbol, options, options.m_memory);
    demangler.Symbol();
    demangler.Suffix();
    use(demangler);
}
} // namespace

void demangle(ZStackStringBase& out, const char* mangled, bool verbose)
{
    demangle(out, kx::detail::TextOf(mangled), verbose);
}

void demangle(ZStackStringBase& out, std::string_view mangled, bool verbose)
{
    demangle(out, mangled, SDemangleOptions{.m_bVerbose = verbose});
}

void demangle(ZStackStringBase& out, std::string_view mangled, const SDemangleOptions& options)
{
    if (!mangled.starts_with('?'))
    {
        mangled.remove_prefix(mangled.starts_with('_') ? 1 : 0);
        return out.append(mangled);
    }
    Read(mangled, options,
         [&](const ZDemangler& demangler) { out.append(demangler.IsComplete() ? demangler.Written() : mangled); });
}

SDemangled demangle(std::span<char> out, std::string_view mangled, const SDemangleOptions& options)
{
    SDemangled result{EDemangled::kNotASymbol, 0};
    if (mangled.starts_with('?'))
        Read(mangled, options,
             [&](const ZDemangler& demangler)
             {
                 const Text text = demangler.IsComplete() ? demangler.Written() : Text();
                 const bool bFits = text.size() < out.size();
                 result = {!demangler.IsComplete()
                               ? demangler.IsTooLarge() ? EDemangled::kTooLarge : EDemangled::kNotASymbol
                           : bFits ? EDemangled::kRead
                                   : EDemangled::kCut,
                           text.size()};
                 if (!out.empty() && !text.empty())
                     std::memmove(out.data(), text.data(), bFits ? text.size() : out.size() - 1);
             });
    if (!out.empty())
        out[std::min<size_t>(result.m_nLength, out.size() - 1)] = '\0';
    return result;
}
