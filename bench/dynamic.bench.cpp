// ZDynamicObject beside the values of JSON libraries. Each contestant is an adapter with the same few operations,
// written as the library's own documentation recommends.
#include "core/dynamic/dynamicobject.h"

#include "bench/support.h"

#include <boost/json/src.hpp>
#include <nlohmann/json.hpp>
#include <rapidjson/document.h>
#include <rapidjson/pointer.h>

#include <array>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace
{
// The keys of an object of ten properties. All contestants get them as literals.
#define KX_TEN_KEYS(do)                                                                                                \
    do                                                                                                                 \
    (0, "name") do(1, "position") do(2, "rotation") do(3, "scale") do(4, "mesh") do(5, "material") do(                 \
        6, "visible") do(7, "layer") do(8, "health") do(9, "parent")

std::string Key(int64 i)
{
    return "property" + std::to_string(i);
}

constexpr int kMaxThreads = 4;
constexpr const char* kText = "a text of thirty-one characters";

struct SOurs
{
    using Value = ZDynamicObject;
    using Keys = std::vector<ZString>;
    static Value Object() { return ZDynamicObject::Object(); }
    static Value Array() { return ZDynamicObject::Array(); }
    template <uint64 N>
    static ZString Literal(const char (&acKey)[N])
    {
        return ZString(std::string_view(acKey));
    }
    static ZString MakeKey(const std::string& key) { return ZString(key); }
    template <class T>
    static void Set(Value& object, const ZString& key, T&& value)
    {
        object.Set(key, std::forward<T>(value));
    }
    static void SetText(Value& object, const ZString& key) { object.Set(key, kText); }
    static int Get(const Value& object, const ZString& key) { return object[key].GetValue<int>(); }
    template <class T>
    static void Push(Value& array, T&& value)
    {
        array.PushBack(std::forward<T>(value));
    }
    static double Sum(const Value& array)
    {
        double fSum = 0;
        for (const ZDynamicObject& element : array)
            fSum += element.GetValue<double>();
        return fSum;
    }
    static std::unique_ptr<Value> Copy(const Value& value) { return std::make_unique<Value>(value); }
    static int GetPath(const Value& value)
    {
        int nResult = 0;
        value.TryGetPath("root.position.layer", nResult);
        return nResult;
    }
    static void SetPath(Value& value, int nNumber) { value.TrySetPath("root.position.layer", nNumber); }
    static int GetKeys(const Value& value) { return value["root"]["position"]["layer"].GetValue<int>(); }
};

template <class TJson>
struct TNlohmann
{
    using Value = TJson;
    using Keys = std::vector<std::string>;
    static Value Object() { return TJson::object(); }
    static Value Array() { return TJson::array(); }
    static std::string MakeKey(const std::string& key) { return key; }
    template <class TKey, class T>
    static void Set(Value& object, const TKey& key, T&& value)
    {
        object[key] = std::forward<T>(value);
    }
    template <class TKey>
    static void SetText(Value& object, const TKey& key)
    {
        object[key] = kText;
    }
    template <class TKey>
    static int Get(const Value& object, const TKey& key)
    {
        return object[key].template get<int>();
    }
    template <class T>
    static void Push(Value& array, T&& value)
    {
        array.push_back(std::forward<T>(value));
    }
    static double Sum(const Value& array)
    {
        double fSum = 0;
        for (const Value& element : array)
            fSum += element.template get<double>();
        return fSum;
    }
    static std::unique_ptr<Value> Copy(const Value& value) { return std::make_unique<Value>(value); }
    static int GetPath(const Value& value)
    {
        return value.at(typename TJson::json_pointer("/root/position/layer")).template get<int>();
    }
    static void SetPath(Value& value, int nNumber)
    {
        value[typename TJson::json_pointer("/root/position/layer")] = nNumber;
    }
    static int GetKeys(const Value& value) { return value["root"]["position"]["layer"].template get<int>(); }
};

struct SRapid
{
    // A value together with its document, whose allocator it needs.
    struct Value
    {
        explicit Value(rapidjson::Type type) : m_document(std::make_unique<rapidjson::Document>(type)) {}
        rapidjson::Document::AllocatorType& Allocator() const { return m_document->GetAllocator(); }
        std::unique_ptr<rapidjson::Document> m_document;
    };
    using Keys = std::vector<std::string>;
    static Value Object() { return Value(rapidjson::kObjectType); }
    static Value Array() { return Value(rapidjson::kArrayType); }
    static std::string MakeKey(const std::string& key) { return key; }

    static rapidjson::Value KeyOf(const Value& value, const std::string& key)
    {
        return rapidjson::Value(key.c_str(), static_cast<unsigned>(key.size()), value.Allocator());
    }
    template <unsigned N>
    static rapidjson::Value KeyOf(const Value&, const char (&acKey)[N])
    {
        return rapidjson::Value(rapidjson::StringRef(acKey));
    }
    static rapidjson::Value ValueOf(const Value&, double fValue) { return rapidjson::Value(fValue); }
    static rapidjson::Value ValueOf(const Value&, int nValue) { return rapidjson::Value(nValue); }
    static rapidjson::Value ValueOf(const Value&, bool bValue) { return rapidjson::Value(bValue); }
    static rapidjson::Value ValueOf(const Value& value, const Value& part)
    {
        return rapidjson::Value(*part.m_document, value.Allocator());
    }
    template <class TKey, class T>
    static void Set(Value& object, const TKey& key, const T& value)
    {
        object.m_document->AddMember(KeyOf(object, key), ValueOf(object, value), object.Allocator());
    }
    template <class TKey>
    static void SetText(Value& object, const TKey& key)
    {
        object.m_document->AddMember(KeyOf(object, key), rapidjson::Value(kText, 31, object.Allocator()),
                                     object.Allocator());
    }
    template <class TKey>
    static int Get(const Value& object, const TKey& key)
    {
        return std::as_const(*object.m_document)[key].GetInt();
    }
    static int Get(const Value& object, const std::string& key)
    {
        return std::as_const(*object.m_document)
            .FindMember(rapidjson::Value(rapidjson::StringRef(key.c_str(), static_cast<unsigned>(key.size()))))
            ->value.GetInt();
    }
    template <class T>
    static void Push(Value& array, const T& value)
    {
        array.m_document->PushBack(ValueOf(array, value), array.Allocator());
    }
    static double Sum(const Value& array)
    {
        double fSum = 0;
        for (const rapidjson::Value& element : array.m_document->GetArray())
            fSum += element.GetDouble();
        return fSum;
    }
    static std::unique_ptr<Value> Copy(const Value& value)
    {
        auto copy = std::make_unique<Value>(rapidjson::kNullType);
        copy->m_document->CopyFrom(*value.m_document, copy->Allocator());
        return copy;
    }
    static int GetPath(const Value& value)
    {
        return rapidjson::Pointer("/root/position/layer").Get(*value.m_document)->GetInt();
    }
    static void SetPath(Value& value, int nNumber)
    {
        rapidjson::Pointer("/root/position/layer").Set(*value.m_document, nNumber);
    }
    static int GetKeys(const Value& value)
    {
        return std::as_const(*value.m_document)["root"]["position"]["layer"].GetInt();
    }
};

struct SBoost
{
    using Value = boost::json::value;
    using Keys = std::vector<std::string>;
    static Value Object() { return boost::json::object(); }
    static Value Array() { return boost::json::array(); }
    static std::string MakeKey(const std::string& key) { return key; }
    template <class T>
    static void Set(Value& object, boost::json::string_view key, T&& value)
    {
        object.get_object()[key] = std::forward<T>(value);
    }
    static void SetText(Value& object, boost::json::string_view key) { object.get_object()[key] = kText; }
    static int Get(const Value& object, boost::json::string_view key)
    {
        return static_cast<int>(object.get_object().find(key)->value().get_int64());
    }
    template <class T>
    static void Push(Value& array, T&& value)
    {
        array.get_array().push_back(std::forward<T>(value));
    }
    static double Sum(const Value& array)
    {
        double fSum = 0;
        for (const Value& element : array.get_array())
            fSum += element.get_double();
        return fSum;
    }
    static std::unique_ptr<Value> Copy(const Value& value) { return std::make_unique<Value>(value); }
    static int GetPath(const Value& value)
    {
        return static_cast<int>(value.at_pointer("/root/position/layer").get_int64());
    }
    static void SetPath(Value& value, int nNumber) { value.at_pointer("/root/position/layer") = nNumber; }
    static int GetKeys(const Value& value)
    {
        const auto& root = value.get_object().find("root")->value();
        return Get(root.get_object().find("position")->value(), "layer");
    }
};

// ---- The rows.

template <class TContestant>
typename TContestant::Value TenProperties()
{
    auto object = TContestant::Object();
#define KX_SET(i, key) TContestant::Set(object, key, i);
    KX_TEN_KEYS(KX_SET)
    return object;
}

template <class TContestant>
void BuildTen(benchmark::State& state)
{
    RunBatches(state, kBatch * 9, [](size_t) { return TContestant::Get(TenProperties<TContestant>(), "parent"); });
}

template <class TContestant>
void FindTen(benchmark::State& state)
{
    const auto object = TenProperties<TContestant>();
    RunBatches(state, kBatch * 45,
               [&](size_t)
               {
// NOLINTNEXTLINE(bugprone-macro-parentheses): a term of a sum
#define KX_GET(i, key) +TContestant::Get(object, key)
                   return 0 KX_TEN_KEYS(KX_GET);
               });
}

template <class TContestant>
auto Keys(int64 n)
{
    typename TContestant::Keys keys;
    for (int64 i = 0; i < n; ++i)
        keys.push_back(TContestant::MakeKey(Key(i)));
    return keys;
}

template <class TContestant>
auto Wide(const typename TContestant::Keys& keys)
{
    auto object = TContestant::Object();
    int nValue = 0;
    for (const auto& key : keys)
        TContestant::Set(object, key, nValue++);
    return object;
}

template <class TContestant>
void BuildWide(benchmark::State& state)
{
    const auto keys = Keys<TContestant>(state.range(0));
    for (auto _ : state)
    {
        const auto object = Wide<TContestant>(keys);
        Consume(state, TContestant::Get(object, keys.back()), state.range(0) - 1);
    }
}

template <class TContestant>
void FindWide(benchmark::State& state)
{
    const int64 n = state.range(0);
    const auto keys = Keys<TContestant>(n);
    const auto object = Wide<TContestant>(keys);
    for (auto _ : state)
    {
        int64 nSum = 0;
        for (const auto& key : keys)
            nSum += TContestant::Get(object, key);
        Consume(state, nSum, n * (n - 1) / 2);
    }
}

// A tree of 1000 objects with nine values each, most of them numbers: 10,001 nodes.
template <class TContestant>
auto Tree()
{
    auto tree = TContestant::Array();
    for (int i = 0; i < 1000; ++i)
    {
        auto object = TContestant::Object();
        TContestant::SetText(object, "name");
        TContestant::Set(object, "position", i * 0.5);
        TContestant::Set(object, "rotation", i * 0.25);
        TContestant::Set(object, "scale", 1.0);
        TContestant::Set(object, "mesh", i);
        TContestant::Set(object, "material", i + 1);
        TContestant::Set(object, "visible", i % 2 == 0);
        TContestant::Set(object, "layer", i % 8);
        TContestant::Set(object, "health", 100.0);
        TContestant::Push(tree, std::move(object));
    }
    return tree;
}

template <class TContestant>
void CopyTree(benchmark::State& state)
{
    const auto tree = Tree<TContestant>();
    std::unique_ptr<typename TContestant::Value> copy;
    for (auto _ : state)
    {
        copy = TContestant::Copy(tree);
        benchmark::ClobberMemory();
        state.PauseTiming();
        copy.reset();
        state.ResumeTiming();
    }
}

template <class TContestant>
void DestroyTree(benchmark::State& state)
{
    const auto tree = Tree<TContestant>();
    for (auto _ : state)
    {
        state.PauseTiming();
        auto copy = TContestant::Copy(tree);
        state.ResumeTiming();
        copy.reset();
        benchmark::ClobberMemory();
    }
}

template <class TContestant>
auto ThreeLevels()
{
    auto middle = TContestant::Object();
    TContestant::Set(middle, "name", 1);
    TContestant::Set(middle, "position", TenProperties<TContestant>());
    auto root = TContestant::Object();
    TContestant::Set(root, "version", 1);
    TContestant::Set(root, "root", std::move(middle));
    return root;
}

template <class TContestant>
void GetPath(benchmark::State& state)
{
    const auto tree = ThreeLevels<TContestant>();
    RunBatches(state, kBatch * 7, [&](size_t) { return TContestant::GetPath(tree); });
}

template <class TContestant>
void GetKeys(benchmark::State& state)
{
    const auto tree = ThreeLevels<TContestant>();
    RunBatches(state, kBatch * 7, [&](size_t) { return TContestant::GetKeys(tree); });
}

template <class TContestant>
void SetPath(benchmark::State& state)
{
    auto tree = ThreeLevels<TContestant>();
    RunBatches(state, kBatch,
               [&](size_t i)
               {
                   TContestant::SetPath(tree, static_cast<int>(i));
                   return 1;
               });
    Consume(state, TContestant::GetPath(tree), kBatch - 1);
}

template <class TContestant>
void PushAndSum(benchmark::State& state)
{
    const int64 n = state.range(0);
    for (auto _ : state)
    {
        auto array = TContestant::Array();
        for (int64 i = 0; i < n; ++i)
            TContestant::Push(array, static_cast<double>(i));
        Consume(state, static_cast<int64>(TContestant::Sum(array)), n * (n - 1) / 2);
    }
}

// Every thread builds a tree of its own, copies it, and destroys both. The time is the CPU time of all threads for one
// of them, so it stays the same if they do not disturb each other.
template <class TContestant, int nThreads>
void BuildInThreads(benchmark::State& state)
{
    constexpr int kTrees = 4 * kMaxThreads / nThreads;
    for (auto _ : state)
    {
        std::vector<std::thread> threads;
        threads.reserve(nThreads);
        for (int nThread = 0; nThread < nThreads; ++nThread)
        {
            threads.emplace_back(
                []
                {
                    for (int nTree = 0; nTree < kTrees; ++nTree)
                    {
                        const auto tree = Tree<TContestant>();
                        const auto pCopy = TContestant::Copy(tree);
                        benchmark::DoNotOptimize(pCopy.get());
                    }
                });
        }
        for (std::thread& thread : threads)
            thread.join();
    }
}

template <class TContestant, int nThreads>
void RegisterThreads(const char* pszName)
{
    const std::string row = "build and copy trees, " + std::to_string(nThreads) + " threads/" + pszName;
    benchmark::RegisterBenchmark(row.c_str(), BuildInThreads<TContestant, nThreads>)
        ->Arg(10000)
        ->MeasureProcessCPUTime();
}

template <class TContestant>
void RegisterContestant(const char* pszName)
{
    RegisterAt("build an object", pszName, BuildTen<TContestant>, {10});
    RegisterAt("build a wide object", pszName, BuildWide<TContestant>, {1000});
    RegisterAt("look up every key", pszName, FindTen<TContestant>, {10});
    RegisterAt("look up every key, wide", pszName, FindWide<TContestant>, {1000});
    RegisterAt("copy a tree", pszName, CopyTree<TContestant>, {10000});
    RegisterAt("destroy a tree", pszName, DestroyTree<TContestant>, {10000});
    RegisterAt("get by three keys", pszName, GetKeys<TContestant>, {3});
    RegisterAt("get by a path", pszName, GetPath<TContestant>, {3});
    RegisterAt("set by a path", pszName, SetPath<TContestant>, {3});
    RegisterAt("push numbers and sum", pszName, PushAndSum<TContestant>, {100000});
    RegisterThreads<TContestant, 1>(pszName);
    RegisterThreads<TContestant, 2>(pszName);
    RegisterThreads<TContestant, kMaxThreads>(pszName);
}
} // namespace

int main(int argc, char** argv)
{
    RegisterContestant<SOurs>("ZDynamicObject");
    RegisterContestant<TNlohmann<nlohmann::json>>("nlohmann::json");
    RegisterContestant<TNlohmann<nlohmann::ordered_json>>("ordered_json");
    RegisterContestant<SRapid>("RapidJSON");
    RegisterContestant<SBoost>("boost::json");
    return RunBenchmarks(argc, argv);
}
