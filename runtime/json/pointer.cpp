// What leads into a tree and what changes it by another tree.
#include "runtime/json/json.h"

#include <algorithm>

namespace json
{
namespace
{
// Makes a key of a step; false if a "~" is not part of "~0" or "~1". buffer has the characters if they are not those of
// the step itself.
bool Unescape(std::string_view step, TArray<char>& buffer, std::string_view& key)
{
    key = step;
    if (step.find('~') == std::string_view::npos)
        return true;
    buffer.Clear();
    for (std::size_t i = 0; i < step.size(); ++i)
    {
        char c = step[i];
        if (c == '~')
        {
            ++i;
            if (i == step.size() || (step[i] != '0' && step[i] != '1'))
                return false;
            c = step[i] == '0' ? '~' : '/';
        }
        buffer.Add(c);
    }
    key = {buffer.Begin(), buffer.Size()};
    return true;
}

const ZDynamicObject* FindElement(const ZDynamicObject& array, std::string_view step)
{
    // Digits only, and no zero before others.
    const bool bDigits = !step.empty() && step.size() < 20
                         && step.find_first_not_of("0123456789") == std::string_view::npos
                         && (step[0] != '0' || step.size() == 1);
    uint64 nIndex = 0;
    for (const char c : bDigits ? step : std::string_view())
        nIndex = nIndex * 10 + static_cast<uint64>(c - '0');
    return bDigits && nIndex < array.Size() ? &array.Get(nIndex) : nullptr;
}

const ZDynamicObject* FindChild(const ZDynamicObject& node, std::string_view step, TArray<char>& buffer)
{
    std::string_view key;
    if (!Unescape(step, buffer, key))
        return nullptr;
    if (node.IsArray())
        return FindElement(node, key);
    const SDynamicObjectKeyValuePair* pProperty = node.IsObject() ? kx::detail::FindProperty(node, key) : nullptr;
    return pProperty != nullptr ? &pProperty->m_value : nullptr;
}

// An object that is to be patched, and its patch.
struct SMerge
{
    ZDynamicObject* m_pTarget;
    const ZDynamicObject* m_pPatch;
};

// Changes the properties that are no objects in the patch, then notes the others: by then no property moves any more.
void MergeProperties(const SMerge& merge, TArray<SMerge>& merges)
{
    ZDynamicObject& target = *merge.m_pTarget;
    for (auto properties = merge.m_pPatch->GetPropertiesEnumerator(); properties.MoveNext();)
    {
        const auto& [key, value] = properties.Current();
        if (value.IsNull())
            target.Remove(key);
        else if (!value.IsObject())
            target.Set(key, value);
        else if (!target.Get(key).IsObject())
            target.Set(key, ZDynamicObject::Object());
    }
    for (auto properties = merge.m_pPatch->GetPropertiesEnumerator(); properties.MoveNext();)
    {
        const auto& [key, value] = properties.Current();
        if (value.IsObject())
            merges.Add({&target.Get(key), &value});
    }
}
} // namespace

const ZDynamicObject* Find(const ZDynamicObject& tree, std::string_view pointer)
{
    const ZDynamicObject* pNode = &tree;
    TArray<char> buffer;
    while (pNode != nullptr && !pointer.empty())
    {
        if (pointer[0] != '/')
            return nullptr;
        const std::size_t nEnd = std::min(pointer.find('/', 1), pointer.size());
        pNode = FindChild(*pNode, pointer.substr(1, nEnd - 1), buffer);
        pointer.remove_prefix(nEnd);
    }
    return pNode;
}

void MergePatch(ZDynamicObject& target, const ZDynamicObject& patch)
{
    const ZDynamicObject copy = patch; // it may be a part of the target
    if (!copy.IsObject())
    {
        target = copy;
        return;
    }
    if (!target.IsObject())
        target = ZDynamicObject::Object();
    TArray<SMerge> merges;
    merges.Add({&target, &copy});
    while (!merges.IsEmpty())
    {
        const SMerge merge = merges.End()[-1];
        merges.Erase(merges.End() - 1);
        MergeProperties(merge, merges);
    }
}
} // namespace json
