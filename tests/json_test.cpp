// JSON in and out of dynamic objects.
#include "runtime/json/json.h"

#include "core/dynamic/treebuilder.h"
#include "tests/support/breaks.h"
#include "tests/support/modeltest.h"
#include "tests/support/treemodel.h"
#include "tests/support/usertypes.h"

#include <fstream>
#include <limits>
#include <sstream>
#include <string>
#include <sys/resource.h>

// Stored as text, which JSON has.
template <>
struct TDynamicValue<SVertex>
{
    static ZVariant Store(const SVertex& vertex)
    {
        return ZVariant(ZString::Format("{0} {1} {2}", vertex.m_fX, vertex.m_fY, vertex.m_fZ));
    }
};

namespace
{
class Json : public testing::Test
{
    const ZMemAllocatorScope m_scope;
};

std::string Written(const ZDynamicObject& tree, const json::SWriteOptions& options = {})
{
    ZString text = "untouched";
    json::SError error;
    const bool bWritten = json::Write(tree, text, &error, options);
    return bWritten || !(text == "untouched") ? text.ToCString() : std::string("! ") + error.m_pszMessage;
}

std::string Decoded(std::string_view text)
{
    std::string decoded;
    for (size_t i = 0; i < text.size(); ++i)
    {
        decoded +=
            text[i] != '%' ? text[i] : static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16));
        i += text[i] == '%' ? 2 : 0;
    }
    return decoded;
}

json::SReadOptions OptionsOf(const std::string& letters)
{
    const auto has = [&](char c) { return letters.find(c) != std::string::npos; };
    json::SReadOptions options{has('c'), has('t'), has('u'), has('e')};
    if (letters[0] <= '9' && letters[0] >= '0')
        options.m_nMaxDepth = static_cast<uint32>(letters[0] - '0');
    return options;
}

TEST_F(Json, ReadsAndRefusesByTheTable)
{
    std::ifstream file(KX_TEST_DATA "json.tsv");
    std::string line;
    int nRows = 0;
    while (std::getline(file, line))
    {
        if (line.starts_with('#'))
            continue;
        const size_t nText = line.find('\t') + 1;
        const size_t nResult = line.find('\t', nText) + 1;
        const std::string text = Decoded(line.substr(nText, nResult - nText - 1));
        const std::string expected = Decoded(line.substr(nResult));
        SCOPED_TRACE(line);
        ZDynamicObject tree("untouched");
        json::SError error;
        const bool bRead = json::Read(text, tree, &error, OptionsOf(line.substr(0, nText)));
        EXPECT_EQ(bRead, !expected.starts_with('!')) << error.ToString();
        ++nRows;
        if (bRead)
        {
            EXPECT_EQ(Written(tree), expected);
            continue;
        }
        EXPECT_EQ(tree, "untouched");
        std::istringstream words(expected.substr(1));
        uint64 nOffset = 0;
        uint64 nLine = 0;
        uint64 nColumn = 0;
        words >> nOffset >> nLine >> nColumn >> std::ws;
        std::string part;
        std::getline(words, part);
        EXPECT_EQ(error.m_nOffset, nOffset) << error.ToString();
        EXPECT_EQ(error.m_nLine, nLine);
        EXPECT_EQ(error.m_nColumn, nColumn);
        EXPECT_NE(std::string(error.m_pszMessage).find(part), std::string::npos) << error.ToString();
    }
    EXPECT_GT(nRows, 60);
}

// Every text that differs from a sample in one byte, beside another parser.
TEST_F(Json, AgreesWithAnotherParserOnNeighbours)
{
    const std::string sample = R"({"k":[-10.5e+3,true,null,"a\u00e4\\\ud83d\ude00)"
                               "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"
                               R"("],"":{}} )";
    for (size_t i = 0; i < sample.size(); ++i)
    {
        for (size_t n = 0; n < 768; ++n)
        {
            if (n % 256 == 0)
                continue; // the other parser takes NUL for the end
            // Replaced, inserted, or cut after it.
            const char c = static_cast<char>(n);
            const std::string text =
                n < 512 ? sample.substr(0, i) + c + sample.substr(i + n / 256) : sample.substr(0, i) + c;
            const nlohmann::ordered_json model = nlohmann::ordered_json::parse(text, nullptr, false);
            ZDynamicObject tree;
            ASSERT_EQ(json::Read(text, tree), !model.is_discarded()) << text;
            ZDynamicObject again;
            ASSERT_TRUE(model.is_discarded() || (json::Read(model.dump(), again) && again == tree)) << text;
            // The negative zero makes the text one that only the slow way reads.
            ASSERT_TRUE(model.is_discarded() || (json::Read("[-0," + text + "]", again) && again[1] == tree)) << text;
        }
    }
}

TEST_F(Json, ReadsBackWhatItWrites)
{
    ForEachSeed(100000,
                [](const auto& below)
                {
                    ZModelledTree modelled;
                    for (uint64 i = below(12); i > 0; --i)
                        modelled.Step(below);
                    const ZDynamicObject& tree = modelled.Tree();
                    const uint32 nIndent = static_cast<uint32>(below(5));
                    const std::string text = Written(tree, {.m_nIndent = nIndent});
                    ASSERT_EQ(text, modelled.Document().dump(nIndent == 0 ? -1 : static_cast<int>(nIndent)));
                    ZDynamicObject read;
                    ASSERT_TRUE(json::Read(text, read) && read.Validate() && read == tree) << text;
                });
}

TEST_F(Json, NumbersAndStringsSurvive)
{
    ForEachSeed(20000,
                [](const auto& below)
                {
                    const uint64 nBits = below(UINT64_MAX);
                    float64 fNumber = 0;
                    std::memcpy(&fNumber, &nBits, sizeof(fNumber));
                    if (below(2) == 0)
                        fNumber = static_cast<float64>(static_cast<int64>(nBits)) / 64;
                    std::string chars;
                    for (uint64 n = below(200); n > 0; --n)
                        chars += static_cast<char>(below(10) == 0 ? below(128) : 'a' + below(26));
                    const ZDynamicObject tree = ZDynamicObject::Array().PushBack(fNumber).PushBack(ZString(chars));
                    ZDynamicObject read;
                    const std::string text = Written(tree, {.m_bNullForNaN = true});
                    ASSERT_TRUE(json::Read(text, read)) << text;
                    ASSERT_TRUE(read == tree || !std::isfinite(fNumber)) << text;
                    ASSERT_EQ(nlohmann::json::parse(text)[1].get<std::string>(), chars);
                });
}

TEST_F(Json, HasNoLimitOfDepth)
{
    constexpr size_t kDepth = 1000000;
    std::string text;
    for (size_t i = 0; i < kDepth; ++i)
        text += i % 2 == 0 ? "[" : "{\"key\":";
    text += "1";
    for (size_t i = kDepth; i-- > 0;)
        text += i % 2 == 0 ? "]" : "}";
    ZDynamicObject tree;
    ASSERT_TRUE(json::Read(text, tree));
    const ZDynamicObject copy = tree;
    EXPECT_EQ(copy, tree);
    EXPECT_EQ(Written(copy), text);
    text.pop_back();
    json::SError error;
    EXPECT_FALSE(json::Read(text, tree, &error));
    EXPECT_EQ(error.m_nOffset, text.size());
}

TEST_F(Json, WritesOrRefusesWhatItHasNoFormFor)
{
    const float64 fNaN = std::numeric_limits<float64>::quiet_NaN();
    const float32 fInfinite = std::numeric_limits<float32>::infinity();
    EXPECT_EQ(Written(fNaN), "! A number is infinite or NaN.");
    EXPECT_EQ(Written(ZDynamicObject(ZVariant(fInfinite)), {.m_bNullForNaN = true}), "null");
    const ZDynamicObject bad(ZString(std::string_view("a\xC3\x28\xFF")));
    EXPECT_EQ(Written(bad), "! A string is not UTF-8.");
    EXPECT_EQ(Written(bad, {.m_bReplaceBadText = true}), "\"a\xEF\xBF\xBD(\xEF\xBF\xBD\"");
    EXPECT_EQ(Written(ZDynamicObject(ZVariant(INT64_MIN))), "-9223372036854775808");
    EXPECT_EQ(Written(ZDynamicObject(ZVariant(UINT64_MAX))), "18446744073709551615");
    EXPECT_EQ(Written(ZDynamicObject(ZVariant(0.1F))), "0.1");
    const ZDynamicObject vertex = ZDynamicObject::Array().PushBack(ZVariant(SVertex{1, 2, 3}));
    EXPECT_EQ(Written(vertex), "! A value has a type that JSON has not.");
    EXPECT_EQ(Written(vertex, {.m_pfnConvert = &json::Convert<ZString, SVertex>}), "[\"1 2 3\"]");
}

TEST_F(Json, WritesInPieces)
{
    ZDynamicObject tree = ZDynamicObject::Array();
    tree.PushBack(ZString(std::string(40000, '"')));
    for (int i = 0; i < 1000; ++i)
        tree.PushBack(ZDynamicObject::Object().Set("key", i))
            .PushBack(ZString(std::string(static_cast<size_t>(i), '"')));
    for (const uint32 nIndent : {0U, 3U, 30000U})
    {
        const ZDynamicObject part = nIndent < 4 ? tree : ZDynamicObject::Array().PushBack(1);
        std::string text;
        size_t nLongest = 0;
        const auto append = [&](std::string_view piece)
        {
            text += piece;
            nLongest = std::max(nLongest, piece.size());
            return true;
        };
        ASSERT_TRUE(json::Write(part, append, nullptr, {.m_nIndent = nIndent}));
        EXPECT_LE(nLongest, 16384U);
        std::ostringstream stream;
        ASSERT_TRUE(json::Write(part, stream, nullptr, {.m_nIndent = nIndent}));
        EXPECT_TRUE(stream.str() == text && text == Written(part, {.m_nIndent = nIndent}));
        ZDynamicObject read;
        EXPECT_TRUE(json::Read(text, read) && read == part);
    }
    int nPieces = 0;
    json::SError error;
    EXPECT_FALSE(json::Write(
        tree, [&](std::string_view) { return ++nPieces < 3; }, &error));
    EXPECT_EQ(nPieces, 3);
    EXPECT_EQ(error.ToString(), "The output was not taken.");
    std::ostringstream full;
    full.setstate(std::ios::badbit);
    EXPECT_FALSE(json::Write(tree, full));
}

// The examples of RFC 6901 and RFC 7396.
TEST_F(Json, FindsAndMerges)
{
    const auto read = [](std::string_view text)
    {
        ZDynamicObject tree;
        EXPECT_TRUE(json::Read(text, tree)) << text;
        return tree;
    };
    const ZDynamicObject tree =
        read(R"({"foo":["bar","baz"],"":0,"a/b":1,"c%d":2,"i\\j":5,"k\"l":6," ":7,"m~n":8,"x.y":{"z":9}})");
    const std::pair<const char*, const char*> aFound[] = {{"/foo", "[\"bar\",\"baz\"]"},
                                                          {"/foo/1", "\"baz\""},
                                                          {"/", "0"},
                                                          {"/a~1b", "1"},
                                                          {"/c%d", "2"},
                                                          {"/i\\j", "5"},
                                                          {"/k\"l", "6"},
                                                          {"/ ", "7"},
                                                          {"/m~0n", "8"},
                                                          {"/x.y/z", "9"}};
    for (const auto& [pszPointer, pszFound] : aFound)
    {
        const ZDynamicObject* pFound = json::Find(tree, pszPointer);
        EXPECT_EQ(pFound != nullptr ? Written(*pFound) : "nothing", pszFound) << pszPointer;
    }
    EXPECT_EQ(json::Find(tree, ""), &tree);
    for (const char* pszPointer : {"foo", "/foo/2", "/foo/-", "/foo/01", "/foo/", "/foo/18446744073709551616", "/m~2n",
                                   "/m~", "/bar", "/ /0", "/foo/0/0"})
        EXPECT_EQ(json::Find(tree, pszPointer), nullptr) << pszPointer;

    const char* const aaMerges[][3] = {
        {R"({"a":"b"})", R"({"a":"c"})", R"({"a":"c"})"},
        {R"({"a":"b","b":"c"})", R"({"a":null})", R"({"b":"c"})"},
        {R"({"a":["b"]})", R"({"a":"c"})", R"({"a":"c"})"},
        {R"({"a":{"b":"c"}})", R"({"a":{"b":"d","c":null},"e":{"f":{}}})", R"({"a":{"b":"d"},"e":{"f":{}}})"},
        {R"(["a","b"])", R"(["c","d"])", R"(["c","d"])"},
        {R"({"a":"foo"})", "null", "null"},
        {R"({"e":null})", R"({"a":1})", R"({"e":null,"a":1})"},
        {R"([1,2])", R"({"a":"b","c":null})", R"({"a":"b"})"},
        {"{}", R"({"a":{"bb":{"ccc":null}}})", R"({"a":{"bb":{}}})"}};
    for (const auto& [pszTarget, pszPatch, pszResult] : aaMerges)
    {
        ZDynamicObject target = read(pszTarget);
        json::MergePatch(target, read(pszPatch));
        EXPECT_EQ(Written(target), pszResult);
    }
    ZDynamicObject own = read(R"({"a":{"b":{"a":null,"d":1}}})");
    json::MergePatch(own, own["a"]["b"]);
    EXPECT_EQ(Written(own), R"({"d":1})");
    std::ostringstream stream;
    stream << read("[1]");
    EXPECT_EQ(stream.str(), "[\n  1\n]");
}

TEST_F(Json, ChangesAndWalksTrees)
{
    ZDynamicObject tree = ZDynamicObject::Array().PushBack(1);
    tree.InsertAt(0, "a");
    tree.InsertAt(2, tree);
    EXPECT_EQ(Written(tree), "[\"a\",1,[\"a\",1]]");
    EXPECT_TRUE(tree.RemoveAt(1) && !tree.RemoveAt(2) && tree.Validate());
    EXPECT_EQ(Written(tree), "[\"a\",[\"a\",1]]");
    EXPECT_BREAK(tree.InsertAt(3, 1));
    EXPECT_BREAK(tree.GetArrayContainer()[1].InsertAt(0, std::move(tree)));
    tree.Clear();
    EXPECT_EQ(Written(tree), "[]");

    ZDynamicObject all = ZDynamicObject::Object().Set("a", true).Set("b", "").Set("c", ZVariant(uint8{1}));
    all.Set("d", 1.5).Set("e", ZDynamicObject()).Set("f", ZVariant(SVertex{})).Set("g", tree).Set("h", all);
    std::string walked;
    for (const auto& [key, value] : all.Properties())
        walked += key.ToCString() + std::to_string(static_cast<int>(value.Kind()));
    EXPECT_EQ(walked, "a1b3c2d2e0f6g4h5");
    EXPECT_EQ(tree.Properties().begin(), tree.Properties().end());
    all.Clear();
    EXPECT_TRUE(all.IsObject() && all.Size() == 0 && all.Validate());
    EXPECT_BREAK(ZDynamicObject(1).Clear());
}

TEST_F(Json, BuilderBreaksAtWhatTheOrderForbids)
{
    BreakCounter breaks;
    ZTreeBuilder builder;
    EXPECT_TRUE(builder.Take().IsNull());
    builder.Key("no object");
    builder.End();
    EXPECT_EQ(breaks.Take(), 3);
    builder.BeginObject(1);
    builder.Key("a");
    builder.Key("twice");
    builder.End();
    EXPECT_EQ(breaks.Take(), 2);
    for (int i = 0; i < 9; ++i)
    {
        builder.BeginArray(2);
        builder.Number(i);
        EXPECT_TRUE(builder.End());
        builder.Key("a");
    }
    builder.Null();
    EXPECT_FALSE(builder.End());
    EXPECT_EQ(Written(builder.Take()), R"({"a":null})");
    EXPECT_EQ(breaks.Take(), 0);
    builder.BeginObject();
    builder.Number(1); // has no key, so it is the whole tree
    EXPECT_EQ(breaks.Take(), 1);
    EXPECT_EQ(Written(builder.Take()), "1");
}

TEST_F(Json, ReadsLineAfterLine)
{
    // Lines around the size of a block, blank ones, and a last one without an end.
    std::string text;
    TArray<ZDynamicObject> expected;
    for (const size_t nSize : {1u, 65000u, 530u, 0u, 65534u, 200000u, 3u})
    {
        expected.Add(ZString(std::string(nSize, 'x')));
        text += Written(expected.End()[-1]) + "\n" + (nSize == 0 ? " \r\n\n" : "");
    }
    text.pop_back();
    TArray<ZDynamicObject> values;
    json::SProgress last;
    const auto keep = [&](ZDynamicObject& value, const json::SProgress& progress)
    {
        values.Add(std::move(value));
        last = progress;
        return progress.m_nValues != 4;
    };
    json::SError error;
    EXPECT_FALSE(json::ReadLines(text, keep, &error));
    EXPECT_EQ(error.m_nOffset + 1, last.m_nBytes);
    EXPECT_EQ(error.m_nLine, 4U);
    // What was not taken is not lost; this source gives it byte by byte.
    std::string_view rest = std::string_view(text).substr(last.m_nBytes);
    const auto byte = [&](char* pBuffer, uint64)
    {
        const uint64 nSize = rest.copy(pBuffer, 1);
        rest.remove_prefix(nSize);
        return nSize;
    };
    EXPECT_TRUE(json::ReadLines(byte, keep, &error)) << error.ToString();
    EXPECT_TRUE(values == expected);
    EXPECT_FALSE(json::ReadLines("1\n\n [2,\n", keep, &error));
    EXPECT_EQ(error.ToString(), "line 3, column 5: A value is expected here.");
    EXPECT_EQ(error.m_nOffset, 7U);
}

#if !defined(KX_TEST_SANITIZED)
TEST_F(Json, RefusesWhatMemoryDoesNotSufficeFor)
{
    const auto read = []
    {
        std::string text;
        text.resize(100000000, ' ');
        const rlimit limit{150000000, 150000000};
        setrlimit(RLIMIT_AS, &limit);
        ZDynamicObject tree("untouched");
        json::SError error;
        const bool bRead = json::Read(text, tree, &error);
        std::_Exit(!bRead && tree == "untouched" && error.ToString() == "line 1, column 1: There is not enough memory."
                       ? 0
                       : 1);
    };
    EXPECT_EXIT(read(), testing::ExitedWithCode(0), "");
}
#endif
} // namespace
