// A dynamic object beside a JSON document of another library. Tests drive the two with random numbers, fuzzers with the
// bytes that they are given.
#pragma once

#include "core/dynamic/dynamicobject.h"

#include <nlohmann/json.hpp>
#include <string>
#include <tuple>
#include <vector>

class ModelledTree
{
    using Model = nlohmann::ordered_json;

public:
    // One operation on a node of the tree; below(n) gives the next number in [0, n).
    template <class TBelow>
    void Step(TBelow&& below)
    {
        // Down to some node, and the path to it as far as the steps are keys.
        Model* pModel = &m_model;
        ZDynamicObject* pNode = &m_tree;
        std::string path;
        bool bKeysOnly = true;
        while (below(4) != 0 && pModel->is_structured() && !pModel->empty())
        {
            const size_t i = below(pModel->size());
            const auto child = std::next(pModel->begin(), static_cast<std::ptrdiff_t>(i));
            bKeysOnly &= pModel->is_object();
            path += pModel->is_object() ? (path.empty() ? "" : ".") + child.key() : "";
            pNode = pModel->is_object() ? &pNode->Get(ZString(child.key())) : &pNode->GetArrayContainer()[i];
            pModel = &*child;
        }

        const std::string key = "key" + std::to_string(below(3) == 0 ? below(200) : below(8));
        const ZString name(key);
        switch (below(12))
        {
        case 0:
        case 1:
        case 2:
        case 3:
            if (pModel->is_null() || pModel->is_object())
            {
                auto [model, value] = MakeValue(below);
                (*pModel)[key] = model;
                pNode->Set(name, std::move(value));
            }
            break;
        case 4:
        case 5:
            if (pModel->is_null() || pModel->is_array())
            {
                auto [model, value] = MakeValue(below);
                pModel->push_back(model);
                pNode->PushBack(value);
            }
            break;
        case 6:
            std::tie(*pModel, *pNode) = MakeValue(below);
            break;
        case 7:
            m_bAgrees &= pNode->Remove(name) == pModel->contains(key);
            if (pModel->is_object())
                pModel->erase(key);
            break;
        case 8: // a part takes the place of the whole that it is a part of, copied or moved
            if (pModel->contains(key))
            {
                *pModel = Model((*pModel)[key]);
                if (below(2) == 0)
                    *pNode = pNode->Get(name);
                else
                    *pNode = std::move(pNode->Get(name));
            }
            break;
        case 9: // and the whole becomes a part of itself
            if (pModel->is_object() && pModel->dump().size() < 1000)
            {
                (*pModel)[key] = Model(*pModel);
                pNode->Set(name, *pNode);
            }
            break;
        case 10:
            if (bKeysOnly)
                StepByPath(*pModel, path, key, below);
            break;
        default: // a look at what is not there changes nothing, nor does writing to it
            ZDynamicObject found(7);
            const bool bThere = pModel->contains(key);
            m_bAgrees &= pNode->TryGet(name, found) == bThere && Agrees(bThere ? (*pModel)[key] : Model(7), found);
            pNode->Get("missing").Set("key", 1).Get("missing") = 2;
            pNode->Get("missing").PushBack(1);
            m_bAgrees &= pNode->Get("missing").IsNull() && std::as_const(*pNode)["missing"]["key"].IsNull();
        }
    }

    // Whether the tree, read in every way, is the model; and so its copies.
    bool Agrees() const
    {
        const ZDynamicObject copy = m_tree;
        return m_bAgrees && Agrees(m_model, m_tree) && Agrees(m_model, copy) && copy == m_tree
               && Reversed(m_tree) == copy;
    }

private:
    template <class TBelow>
    static std::pair<Model, ZDynamicObject> MakeValue(TBelow&& below)
    {
        const uint64 nKind = below(7);
        if (nKind < 3)
            return nKind == 0   ? std::pair(Model(), ZDynamicObject())
                   : nKind == 1 ? std::pair(Model::array(), ZDynamicObject::Array())
                                : std::pair(Model::object(), ZDynamicObject::Object());
        if (nKind == 3)
            return below(2) == 0 ? std::pair(Model(true), ZDynamicObject(true))
                                 : std::pair(Model(false), ZDynamicObject(false));
        if (nKind == 4)
        {
            const std::string text(below(40), 'x');
            return {text, text.c_str()};
        }
        const int nNumber = static_cast<int>(below(1000)) - 500;
        return {nNumber, nNumber};
    }

    template <class TBelow>
    void StepByPath(Model& model, const std::string& path, const std::string& key, TBelow&& below)
    {
        ZDynamicObject result(7);
        m_bAgrees &= m_tree.TryGetPath(ZString(path), result) && Agrees(model, result);
        const ZString below1(path.empty() ? key : path + "." + key);
        m_bAgrees &= m_tree.TryGetPath(below1, result) == model.contains(key)
                     && Agrees(model.contains(key) ? model[key] : model, result);

        const auto [value, object] = MakeValue(below);
        const bool bSet = m_tree.TrySetPath(below1, object);
        m_bAgrees &= bSet == model.is_object();
        if (bSet)
            model[key] = value;
        else
            m_bAgrees &= !m_tree.TryUpdatePath(below1, [](ZDynamicObject&) { return true; });
        m_bAgrees &= m_tree.TryUpdatePath(ZString(path), [&](ZDynamicObject& node) { return Agrees(model, node); });
    }

    static bool Agrees(const Model& model, const ZDynamicObject& node)
    {
        if (!node.Validate() || node.IsNull() != model.is_null() || node.IsArray() != model.is_array()
            || node.IsObject() != model.is_object() || node.IsValue<int>() != model.is_number()
            || node.IsValue<bool>() != model.is_boolean() || node.IsValue<ZString>() != model.is_string()
            || node.Size() != (model.is_structured() ? model.size() : 0) || node.Contains("missing"))
            return false;
        if (model.is_number())
            return node.GetValue<double>() == model.get<double>();
        if (model.is_boolean())
            return node == model.get<bool>();
        if (model.is_string())
            return node == model.get_ref<const std::string&>().c_str();
        const ZDynamicObject* pElement = node.begin();
        auto properties = node.GetPropertiesEnumerator();
        for (const auto& [key, child] : model.items())
        {
            if (model.is_object() && (!properties.MoveNext() || !(properties.Current().m_key == key.c_str())))
                return false;
            if (!Agrees(child, model.is_object() ? node[ZString(key)] : *pElement++))
                return false;
        }
        return pElement == node.end() && !properties.MoveNext() && node[model.size()].IsNull();
    }

    // The same tree with the properties of each object in the opposite order.
    static ZDynamicObject Reversed(const ZDynamicObject& node)
    {
        if (node.IsArray())
        {
            ZDynamicObject result = ZDynamicObject::Array();
            for (const ZDynamicObject& element : node)
                result.PushBack(Reversed(element));
            return result;
        }
        if (!node.IsObject())
            return node;
        std::vector<const SDynamicObjectKeyValuePair*> pairs;
        auto properties = node.GetPropertiesEnumerator();
        while (properties.MoveNext())
            pairs.insert(pairs.begin(), &properties.Current());
        ZDynamicObject result = ZDynamicObject::Object();
        for (const SDynamicObjectKeyValuePair* pPair : pairs)
            result.Set(pPair->m_key, Reversed(pPair->m_value));
        return result;
    }

    Model m_model;
    ZDynamicObject m_tree;
    bool m_bAgrees = true;
};
