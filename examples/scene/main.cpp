// Reads a scene from a JSON file and prints its entities, or the one with a GUID:
//
//   scene FILE [GUID]
//
// An entity has a name, children, and a GUID as its id. One without an id gets a new one.
#include "core/containers/hashmap.h"
#include "core/values/guid.h"
#include "core/values/version.h"
#include "runtime/json/json.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

KX_USE_PROCESS_HEAP;

namespace
{
constexpr Version kNewest{{1, 4, 0, 0}};

struct SEntity
{
    ZGuid m_id;
    ZString m_name;
    TArray<std::unique_ptr<SEntity>> m_children;
};

class ZScene
{
public:
    // Returns what is wrong with the file, or the empty string.
    ZString Load(const ZDynamicObject& file)
    {
        Version format;
        if (!version::FromString(file["version"].GetValueOrDefault(ZString()), &format))
            return "there is no version";
        if (format > kNewest)
            return ZString::Format("version {0} is newer than {1}", format, kNewest);
        m_root.m_name = file["name"].GetValueOrDefault(ZString("scene"));
        return AddChildren(m_root, file["children"]);
    }

    const SEntity& Root() const { return m_root; }

    // Null if there is no such entity.
    const SEntity* Find(const ZGuid& id) const { return m_entities.GetValue(id, nullptr); }

private:
    ZString AddChildren(SEntity& parent, const ZDynamicObject& children)
    {
        for (const ZDynamicObject& child : children)
        {
            SEntity& entity = *parent.m_children.Emplace(std::make_unique<SEntity>());
            entity.m_name = child["name"].GetValueOrDefault(ZString("unnamed"));
            ZString id;
            if (!child.TryGet("id", id))
                entity.m_id = ZGuid::Random();
            else if (!entity.m_id.FromString(id))
                return ZString::Format("the id of {0} is no GUID", entity.m_name);
            if (const auto [other, bNew] = m_entities.Emplace(entity.m_id, &entity); !bNew)
                return ZString::Format("{0} has the id of {1}", entity.m_name, other->Value()->m_name);
            if (ZString error = AddChildren(entity, child["children"]); !error.IsEmpty())
                return error;
        }
        return {};
    }

    SEntity m_root;
    THashMap<ZGuid, SEntity*> m_entities;
};

void Print(const SEntity& entity, int nDepth)
{
    std::printf("%*s%s %s\n", 2 * nDepth, "", entity.m_id.ToString().ToCString(), entity.m_name.ToCString());
    for (const auto& pChild : entity.m_children)
        Print(*pChild, nDepth + 1);
}
} // namespace

int main(int argc, char** argv)
{
    ZGuid wanted;
    std::ifstream file(argc > 1 ? argv[1] : "", std::ios::binary);
    if (!file || argc > 3 || (argc == 3 && !wanted.FromString(argv[2])))
    {
        std::fputs("Usage: scene FILE [GUID]\nPrints the entities of a scene, or one of them.\n", stderr);
        return 2;
    }
    const std::string text(std::istreambuf_iterator<char>(file), {});
    ZDynamicObject tree;
    json::SError error;
    ZScene scene;
    const ZString problem = json::Read(text, tree, &error) ? scene.Load(tree) : error.ToString();
    const SEntity* pEntity = argc == 3 ? scene.Find(wanted) : &scene.Root();
    if (!problem.IsEmpty() || pEntity == nullptr)
    {
        std::fprintf(stderr, "scene: %s\n", problem.IsEmpty() ? "no such entity" : problem.ToCString());
        return 1;
    }
    Print(*pEntity, 0);
    return 0;
}
