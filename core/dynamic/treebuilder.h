// ZTreeBuilder: builds a dynamic object from the values that a parser finds, in the order of the text.
//
//   ZTreeBuilder builder;
//   builder.BeginObject(1);
//   builder.Key("crew");
//   builder.Number(12);
//   builder.End();
//   ZDynamicObject ship = builder.Take();
//
// It is faster than Set and PushBack, and the arrays of the tree have exactly the size that they need. An object with a
// repeated key has the last value at the first place, as after Set.
#pragma once

#include "core/dynamic/dynamicobject.h"

#include <string_view>

/// Builds a tree from the values of a text; see the head of this file.
/// A value, key or end that the order does not allow triggers the debug break. If execution resumes, a key or an end is
/// ignored, and before a value everything is dropped.
class KX_VISIBLE ZTreeBuilder
{
public:
    ZTreeBuilder() = default;
    ZTreeBuilder(const ZTreeBuilder&) = delete;
    ZTreeBuilder& operator=(const ZTreeBuilder&) = delete;

    /// The next value: the whole tree, the next element of the innermost array, or the value of the last key.
    KX_API void Null();
    KX_API void Boolean(bool bValue);
    KX_API void Number(float64 fNumber);
    KX_API void String(std::string_view text);

    /// The key of the next value. Before each value in an object, and nowhere else.
    KX_API void Key(ZString&& key);

    /// Begins an array or object, which is the next value.
    /// Takes one allocation for its children if their number is known; it may be wrong.
    KX_API void BeginArray(uint64 nSize = 0);
    KX_API void BeginObject(uint64 nSize = 0);

    /// Ends the innermost array or object. Returns false if it is an object in which a key was repeated.
    KX_API bool End();

    /// The tree, after its last value; the builder is then empty. Triggers the debug break, and is null if execution
    /// resumes, if there is no value, or an array or object is open.
    [[nodiscard]] KX_API ZDynamicObject Take();

    /// Drops everything.
    KX_API void Clear();

private:
    struct SOpen
    {
        ZDynamicObject* m_pValue; // what is open; its array does not grow as long as this is
        void* m_pNode;
        bool m_bObject;
    };

    ZDynamicObject& Add(STypeID* pType, void* pHeld);
    void Begin(STypeID* pType, void* pNode, bool bObject);

    ZDynamicObject m_tree;
    TArray<SOpen> m_open;
    void* m_pArray = nullptr;           // the innermost node, if it is an array
    ZDynamicObject* m_pPlace = &m_tree; // else, where the next value goes; null if none may follow
};
