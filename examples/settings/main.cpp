// Reads settings from a JSON file, changes some of them and prints the result:
//
//   settings game.json window.width=1920 player.name=Walnut 'keys=["w", "a"]'
//
// The settings are held as a ZDynamicObject; a JSON library parses and prints the JSON. What follows the first "=" is a
// JSON value, or a string if it is not JSON. The last step of a path may be new; the others must exist.
#include "core/dynamic/dynamicobject.h"

#include <cstdio>
#include <fstream>
#include <getopt.h>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace
{
using Json = nlohmann::ordered_json;

// More than any settings need, and little enough for the recursion of ToJson.
constexpr size_t kMaxDepth = 500;

ZString Text(std::string_view text)
{
    return ZString(text);
}

// Builds the tree while the parser reads. m_open has the containers that are still open, the innermost last, each with
// the key of its next value.
class ZBuilder : public nlohmann::json_sax<Json>
{
public:
    const ZDynamicObject& Result() const { return m_result; }
    const std::string& Error() const { return m_error; }

    bool null() override { return Add(ZDynamicObject()); }
    bool boolean(bool bValue) override { return Add(bValue); }
    bool number_integer(number_integer_t nValue) override { return Add(static_cast<int64>(nValue)); }
    bool number_unsigned(number_unsigned_t nValue) override { return Add(static_cast<uint64>(nValue)); }
    bool number_float(number_float_t fValue, const string_t&) override { return Add(fValue); }
    bool string(string_t& text) override { return Add(Text(text)); }
    bool binary(binary_t&) override { return false; }
    bool start_object(std::size_t) override { return Open(ZDynamicObject::Object()); }
    bool start_array(std::size_t) override { return Open(ZDynamicObject::Array()); }
    bool end_object() override { return Close(); }
    bool end_array() override { return Close(); }
    bool key(string_t& text) override
    {
        m_open.back().m_key = Text(text);
        return true;
    }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception& error) override
    {
        m_error = error.what();
        return false;
    }

private:
    bool Add(ZDynamicObject value)
    {
        if (m_open.empty())
            m_result = std::move(value);
        else if (m_open.back().m_value.IsArray())
            m_open.back().m_value.PushBack(std::move(value));
        else
            m_open.back().m_value.Set(m_open.back().m_key, std::move(value));
        return true;
    }

    bool Open(ZDynamicObject container)
    {
        m_open.push_back({ZString(), std::move(container)});
        if (m_open.size() > kMaxDepth)
            m_error = "nested too deeply";
        return m_error.empty();
    }

    bool Close()
    {
        ZDynamicObject container = std::move(m_open.back().m_value);
        m_open.pop_back();
        return Add(std::move(container));
    }

    std::vector<SDynamicObjectKeyValuePair> m_open;
    ZDynamicObject m_result;
    std::string m_error;
};

Json ToJson(const ZDynamicObject& node)
{
    if (node.IsArray())
    {
        Json array = Json::array();
        for (const ZDynamicObject& element : node)
            array.push_back(ToJson(element));
        return array;
    }
    if (node.IsObject())
    {
        Json object = Json::object();
        auto properties = node.GetPropertiesEnumerator();
        while (properties.MoveNext())
        {
            const auto& [key, value] = properties.Current();
            object[std::string(std::string_view(key))] = ToJson(value);
        }
        return object;
    }
    if (node.IsValue<bool>())
        return node.GetValue<bool>();
    if (node.IsValue<ZString>())
        return std::string(std::string_view(node.GetValue<ZString>()));
    if (!node.IsValue<float64>())
        return nullptr;
    // Every number is held as float64; an integer is printed as an integer.
    const float64 fNumber = node.GetValue<float64>();
    const int64 nNumber = node.GetValue<int64>();
    return static_cast<float64>(nNumber) == fNumber && nNumber != INT64_MIN ? Json(nNumber) : Json(fNumber);
}

int Fail(std::string_view what, std::string_view why)
{
    std::fprintf(stderr, "settings: %.*s: %.*s\n", static_cast<int>(what.size()), what.data(),
                 static_cast<int>(why.size()), why.data());
    return 1;
}

// Applies "path=value" and returns the exit status.
int Apply(ZDynamicObject& settings, std::string_view change)
{
    const size_t nEquals = change.find('=');
    if (nEquals == std::string_view::npos)
        return Fail(change, "not of the form path=value");
    const std::string_view path = change.substr(0, nEquals);
    const std::string_view value = change.substr(nEquals + 1);
    ZBuilder builder;
    const bool bJson = Json::sax_parse(value, &builder);
    if (!settings.TrySetPath(Text(path), bJson ? builder.Result() : ZDynamicObject(Text(value))))
        return Fail(path, "there is no object for it to be in");
    return 0;
}

int Run(const char* pszFile, char** ppszChanges)
{
    std::ifstream file(pszFile);
    if (!file)
        return Fail(pszFile, "cannot be read");
    ZBuilder builder;
    if (!Json::sax_parse(file, &builder))
        return Fail(pszFile, builder.Error());
    ZDynamicObject settings = builder.Result();
    for (; *ppszChanges != nullptr; ++ppszChanges)
    {
        if (const int nStatus = Apply(settings, *ppszChanges))
            return nStatus;
    }
    const std::string text = ToJson(settings).dump(2, ' ', false, Json::error_handler_t::replace);
    std::printf("%s\n", text.c_str());
    return 0;
}
} // namespace

int main(int argc, char** argv)
{
    const option aOptions[] = {{"help", no_argument, nullptr, 'h'}, {}};
    const int nOption = getopt_long(argc, argv, "h", aOptions, nullptr);
    const bool bHelp = nOption == 'h';
    if (nOption != -1 || optind >= argc)
    {
        std::fputs("Usage: settings FILE [PATH=VALUE...]\n"
                   "Prints the JSON file with the changes. PATH: keys joined by dots. VALUE: JSON, or else a string.\n",
                   bHelp ? stdout : stderr);
        return bHelp ? 0 : 2;
    }
    const ZMemAllocatorScope scope;
    return Run(argv[optind], argv + optind + 1);
}
