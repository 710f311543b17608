// A dynamic object beside a plain model of it. Tests drive the two with random numbers, fuzzers with the bytes that
// they are given.
#pragma once

#include "core/dynamic/dynamicobject.h"

#include <algorithm>
#include <string>
#include <variant>
#include <vector>

struct ModelNode;
struct ModelProperty;
using ModelArray = std::vector<ModelNode>;
using ModelObject = std::vector<ModelProperty>;

struct ModelNode
{
    std::variant<std::monostate, double, bool, std::string, ModelArray, ModelObject> m_value;

    ModelArray* Array() { return std::get_if<ModelArray>(&m_value); }
    ModelObject* Object() { return std::get_if<ModelObject>(&m_value); }
    bool IsNull() const { return m_value.index() == 0; }

    ModelNode* Find(const std::string& key);
    ModelNode& FindOrAdd(const std::string& key);
};

struct ModelProperty
{
    std::string m_key;
    ModelNode m_node;
};

inline ModelNode* ModelNode::Find(const std::string& key)
{
    if (Object() == nullptr)
        return nullptr;
    const auto found = std::find_if(Object()->begin(), Object()->end(),
                                    [&](ModelProperty& property) { return property.m_key == key; });
    return found != Object()->end() ? &found->m_node : nullptr;
}

inline ModelNode& ModelNode::FindOrAdd(const std::string& key)
{
    if (ModelNode* pNode = Find(key))
        return *pNode;
    return Object()->emplace_back(ModelProperty{key, ModelNode()}).m_node;
}

class ModelledTree
{
public:
    // One operation on a node of the tree; below(n) gives the next number in [0, n).
    template <class TBelow>
    void Step(TBelow&& below)
    {
        // Down to some node, and the path to it as far as the steps are keys.
        ModelNode* pModel = &m_model;
        ZDynamicObject* pNode = &m_tree;
        std::string path;
        bool bKeysOnly = true;
        while (below(4) != 0)
        {
            if (pModel->Array() != nullptr && !pModel->Array()->empty())
            {
                const size_t i = below(pModel->Array()->size());
                pNode = &pNode->GetArrayContainer()[i];
                pModel = &(*pModel->Array())[i];
                bKeysOnly = false;
            }
            else if (pModel->Object() != nullptr && !pModel->Object()->empty())
            {
                auto& [key1, child] = (*pModel->Object())[below(pModel->Object()->size())];
                path += (pModel == &m_model ? "" : ".") + key1;
                pNode = &pNode->Get(ZString(key1));
                pModel = &child;
            }
            else
                break;
        }

        const std::string key = "key" + std::to_string(below(3) == 0 ? below(200) : below(8));
        const ZString name(key);
        switch (below(12))
        {
        case 0:
        case 1:
        case 2:
        case 3:
            if (pModel->IsNull())
                pModel->m_value = ModelObject();
            if (pModel->Object() != nullptr)
            {
                auto [model, value] = MakeValue(below);
                pModel->FindOrAdd(key) = model;
                pNode->Set(name, std::move(value));
            }
            break;
        case 4:
        case 5:
            if (pModel->IsNull())
                pModel->m_value = ModelArray();
            if (pModel->Array() != nullptr)
            {
                auto [model, value] = MakeValue(below);
                pModel->Array()->push_back(model);
                pNode->PushBack(value);
            }
            break;
        case 6:
        {
            auto [model, value] = MakeValue(below);
            *pModel = model;
            *pNode = value;
            break;
        }
        case 7:
            m_bAgrees &= pNode->Remove(name) == (pModel->Find(key) != nullptr);
            if (pModel->Object() != nullptr)
                std::erase_if(*pModel->Object(), [&](ModelProperty& property) { return property.m_key == key; });
            break;
        case 8: // a part takes the place of the whole that it is a part of, copied or moved
            if (ModelNode* pChild = pModel->Find(key))
            {
                const ModelNode child = *pChild;
                *pModel = child;
                if (below(2) == 0)
                    *pNode = pNode->Get(name);
                else
                    *pNode = std::move(pNode->Get(name));
            }
            break;
        case 9: // and the whole becomes a part of itself
            if (pModel->Object() != nullptr && Count(*pModel) < 50)
            {
                const ModelNode whole = *pModel;
                pModel->FindOrAdd(key) = whole;
                pNode->Set(name, *pNode);
            }
            break;
        case 10:
            if (bKeysOnly)
                StepByPath(*pModel, path, key, below);
            break;
        default: // a look at what is not there changes nothing, nor does writing to it
            ZDynamicObject found(7);
            ModelNode* pFound = pModel->Find(key);
            m_bAgrees &= pNode->TryGet(name, found) == (pFound != nullptr)
                         && (pFound != nullptr ? Agrees(*pFound, found) : found == 7);
            if (pModel->Find("missing") == nullptr)
            {
                pNode->Get("missing").Set("key", 1).Get("missing") = 2;
                pNode->Get("missing").PushBack(1);
                m_bAgrees &= pNode->Get("missing").IsNull() && std::as_const(*pNode)["missing"]["key"].IsNull();
            }
        }
    }

    // Whether the tree, read in every way, is the model; and so its copies.
    bool Agrees()
    {
        const ZDynamicObject copy = m_tree;
        ZDynamicObject shuffled;
        return m_bAgrees && Agrees(m_model, m_tree) && Agrees(m_model, copy) && copy == m_tree
               && Reversed(m_tree, shuffled) == copy && Count(m_model) < 100000;
    }

private:
    template <class TBelow>
    static std::pair<ModelNode, ZDynamicObject> MakeValue(TBelow&& below)
    {
        ModelNode model;
        switch (below(7))
        {
        case 0:
            return {model, ZDynamicObject::Null()};
        case 1:
            model.m_value = ModelArray();
            return {model, ZDynamicObject::Array()};
        case 2:
            model.m_value = ModelObject();
            return {model, ZDynamicObject::Object()};
        case 3:
            model.m_value = below(2) == 0;
            return {model, ZDynamicObject(std::get<bool>(model.m_value))};
        case 4:
            model.m_value = std::string(below(40), 'x');
            return {model, ZDynamicObject(std::get<std::string>(model.m_value).c_str())};
        default:
            const int nNumber = static_cast<int>(below(1000)) - 500;
            model.m_value = static_cast<double>(nNumber);
            return {model, ZDynamicObject(nNumber)};
        }
    }

    template <class TBelow>
    void StepByPath(ModelNode& model, const std::string& path, const std::string& key, TBelow&& below)
    {
        ZDynamicObject result(7);
        m_bAgrees &= m_tree.TryGetPath(ZString(path), result) && Agrees(model, result);
        const ZString below1(path.empty() ? key : path + "." + key);
        m_bAgrees &= m_tree.TryGetPath(below1, result) == (model.Find(key) != nullptr);

        auto [value, object] = MakeValue(below);
        const bool bSet = m_tree.TrySetPath(below1, object);
        m_bAgrees &= bSet == (model.Object() != nullptr);
        if (bSet)
            model.FindOrAdd(key) = value;
        else
            m_bAgrees &= !m_tree.TryUpdatePath(below1, [](ZDynamicObject&) { return true; });
        m_bAgrees &= m_tree.TryUpdatePath(ZString(path), [&](ZDynamicObject& node) { return Agrees(model, node); });
    }

    static size_t Count(ModelNode& model)
    {
        size_t nCount = 1;
        if (model.Array() != nullptr)
        {
            for (ModelNode& node : *model.Array())
                nCount += Count(node);
        }
        if (model.Object() != nullptr)
        {
            for (auto& [key, node] : *model.Object())
                nCount += Count(node);
        }
        return nCount;
    }

    static bool Agrees(ModelNode& model, const ZDynamicObject& node)
    {
        if (!node.Validate() || node.IsNull() != model.IsNull() || node.IsArray() != (model.Array() != nullptr)
            || node.IsObject() != (model.Object() != nullptr))
            return false;
        if (const double* pNumber = std::get_if<double>(&model.m_value))
            return node.IsValue<int>() && !node.IsValue<bool>() && node.GetValue<double>() == *pNumber;
        if (const bool* pFlag = std::get_if<bool>(&model.m_value))
            return !node.IsValue<int>() && node.IsValue<bool>() && node == *pFlag;
        if (const std::string* pText = std::get_if<std::string>(&model.m_value))
            return node.IsValue<ZString>() && node == pText->c_str();
        if (ModelArray* pArray = model.Array())
        {
            auto model1 = pArray->begin();
            for (const ZDynamicObject& element : node)
            {
                if (!Agrees(*model1++, element))
                    return false;
            }
            return node.Size() == pArray->size() && node[pArray->size()].IsNull();
        }
        if (ModelObject* pObject = model.Object())
        {
            auto model1 = pObject->begin();
            auto properties = node.GetPropertiesEnumerator();
            while (properties.MoveNext())
            {
                const auto& [key, value] = properties.Current();
                if (!(key == model1->m_key) || &node[key] != &value || !Agrees(model1->m_node, value))
                    return false;
                ++model1;
            }
            return node.Size() == pObject->size() && !node.Contains("missing");
        }
        return node.Size() == 0 && node.begin() == node.end();
    }

    // The same tree with the properties of each object in the opposite order.
    static ZDynamicObject& Reversed(const ZDynamicObject& node, ZDynamicObject& result)
    {
        result = node;
        if (node.IsArray())
        {
            for (uint64 i = 0; i < node.Size(); ++i)
                Reversed(node[i], result.GetArrayContainer()[i]);
        }
        if (node.IsObject())
        {
            std::vector<const SDynamicObjectKeyValuePair*> pairs;
            auto properties = node.GetPropertiesEnumerator();
            while (properties.MoveNext())
                pairs.insert(pairs.begin(), &properties.Current());
            result = ZDynamicObject::Object();
            for (const SDynamicObjectKeyValuePair* pPair : pairs)
            {
                ZDynamicObject value;
                result.Set(pPair->m_key, std::move(Reversed(pPair->m_value, value)));
            }
        }
        return result;
    }

    ModelNode m_model;
    ZDynamicObject m_tree;
    bool m_bAgrees = true;
};
