// A dynamic object beside its model, a JSON document of another library. Tests drive both with random numbers, fuzzers
// with the bytes that they are given.
#pragma once

#include "core/dynamic/dynamicobject.h"

#include <nlohmann/json.hpp>
#include <string>
#include <tuple>

class ZModelledTree
{
    using Model = nlohmann::ordered_json;

public:
    // One operation on a node of the tree; below(n) returns the next number in [0, n).
    template <class TBelow>
    void Step(TBelow&& below)
    {
        // Walks down to the node. The path to it exists if all steps are keys.
        Model* pModel = &m_model;
        ZDynamicObject* pNode = &m_tree;
        std::string path;
        bool bKeysOnly = true;
        while (below(4) != 0 && pModel->is_structured() && !pModel->empty())
        {
            const size_t i = below(pModel->size());
            const auto child = std::next(pModel->begin(), static_cast<std::ptrdiff_t>(i));
            bKeysOnly &= pModel->is_object();
            path += pModel->is_object() ? (pNode == &m_tree ? "" : ".") + child.key() : "";
            pNode = pModel->is_object() ? &pNode->Get(ZString(child.key())) : &pNode->GetArrayContainer()[i];
            pModel = &*child;
        }
        const bool bEmptyKey = below(16) == 0;
        const std::string key = bEmptyKey ? "" : "key" + std::to_string(below(3) == 0 ? below(200) : below(8));
        const uint64 nOperation = below(12);
        if (nOperation != 10)
            Operate(nOperation, *pModel, *pNode, key, below);
        else if (bKeysOnly && (pNode == &m_tree ? !key.empty() : !path.empty())) // the empty path is the root
            OperateByPath(*pModel, path, key, below);
    }

    const ZDynamicObject& Tree() const { return m_tree; }
    const nlohmann::ordered_json& Document() const { return m_model; }

    // Whether the tree and a copy of it match the model, however they are read.
    bool Agrees() const
    {
        const ZDynamicObject copy = m_tree;
        return m_bAgrees && Agrees(m_model, m_tree) && Agrees(m_model, copy) && copy == m_tree;
    }

private:
    template <class TBelow>
    static std::pair<Model, ZDynamicObject> MakeValue(TBelow&& below)
    {
        const auto both = [](const auto& value) { return std::pair<Model, ZDynamicObject>(value, value); };
        const std::pair<Model, ZDynamicObject> aEmpty[] = {
            {Model(), {}}, {Model::array(), ZDynamicObject::Array()}, {Model::object(), ZDynamicObject::Object()}};
        const uint64 nKind = below(7);
        if (nKind < 3)
            return aEmpty[nKind];
        if (nKind == 3)
            return both(below(2) == 0);
        if (nKind == 4)
            return both(std::string(below(40), 'x').c_str());
        return both(static_cast<int>(below(1000)) - 500);
    }

    template <class TBelow>
    void Operate(uint64 nOperation, Model& model, ZDynamicObject& node, const std::string& key, TBelow&& below)
    {
        const ZString name(key);
        const bool bThere = model.contains(key);
        if (nOperation < 4 && (model.is_null() || model.is_object()))
        {
            auto [value, object] = MakeValue(below);
            model[key] = value;
            node.Set(name, std::move(object));
        }
        else if (nOperation / 2 == 2 && (model.is_null() || model.is_array()))
        {
            const auto [value, object] = MakeValue(below);
            model.push_back(value);
            node.PushBack(object);
        }
        else if (nOperation == 6)
            std::tie(model, node) = MakeValue(below);
        else if (nOperation == 7)
        {
            const ZDynamicObject before = node;
            m_bAgrees &= node.Remove(name) == bThere;
            if (!bThere)
                return;
            model.erase(key);
            // The order of the properties does not count, their number and their keys do.
            ZDynamicObject other = node, reordered = node;
            other.Set("missing", before[name]);
            reordered.Set(name, before[name]);
            m_bAgrees &= before == reordered && before != node && before != other && other != before;
        }
        else if (nOperation == 8 && bThere)
        {
            // A part replaces the node that it is a part of.
            model = Model(model[key]);
            if (below(2) == 0)
                node = node.Get(name);
            else
                node = std::move(node.Get(name));
        }
        else if (nOperation == 9 && model.is_object() && model.dump().size() < 1000)
        {
            // The node becomes a part of itself.
            model[key] = Model(model);
            node.Set(name, node);
        }
        else if (nOperation == 11)
        {
            // Reading a missing property changes nothing.
            ZDynamicObject found(7);
            m_bAgrees &= node.TryGet(name, found) == bThere && Agrees(bThere ? model[key] : Model(7), found);
        }
    }

    template <class TBelow>
    void OperateByPath(Model& model, const std::string& path, const std::string& key, TBelow&& below)
    {
        const bool bThere = model.contains(key);
        const ZString pathOfKey(&model == &m_model ? key : path + "." + key);
        const ZString nowhere = pathOfKey + ".missing.key";
        ZDynamicObject result(7);
        m_bAgrees &= !m_tree.TryGetPath(nowhere, result) && !m_tree.TrySetPath(nowhere, 1) && result == 7;
        m_bAgrees &= m_tree.TryGetPath(ZString(path), result) && Agrees(model, result);
        m_bAgrees &= m_tree.TryGetPath(pathOfKey, result) == bThere && Agrees(bThere ? model[key] : model, result);

        const auto [value, object] = MakeValue(below);
        m_bAgrees &= m_tree.TrySetPath(pathOfKey, object) == model.is_object();
        if (model.is_object())
            model[key] = value;
        else
            m_bAgrees &= !m_tree.TryUpdatePath(pathOfKey, [](ZDynamicObject&) { return true; });
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

    Model m_model;
    ZDynamicObject m_tree;
    bool m_bAgrees = true;
};
