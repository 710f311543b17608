// ZTreeBuilder: builds a dynamic object from the values that a parser finds, in the order of the text.
//
//   ZTreeBuilder builder;
//   builder.BeginObject();
//   builder.Key("crew");
//   builder.Number(12);
//   builder.End();
//   ZDynamicObject ship = builder.Take();
//
// It is faster than Set and PushBack, and the arrays of the tree have exactly the size that they need: children wait in
// the builder until their array or object ends. An object with a repeated key has the last value at the first place, as
// after Set.
#pragma once

#include "core/dynamic/dynamicobject.h"

#include <string_view>

/// Builds a tree from the values of a text; see the head of this file.
class KX_API ZTreeBuilder
{
public:
    /// The next value: the whole tree, the next element of the innermost array, or the value of the last key.
    void Null();
    void Boolean(bool bValue);
    void Number(float64 fNumber);
    void String(std::string_view text);

    /// The key of the next value. Before each value in an object, and nowhere else.
    void Key(ZString&& key);

    /// Begins an array or object, which is the next value.
    void BeginArray() { Begin(false); }
    void BeginObject() { Begin(true); }

    /// Ends the innermost array or object. There must be one.
    void End();

    /// The tree, after its last value; the builder is then empty. Triggers the debug break, and is null if execution
    /// resumes, if there is not exactly one value, or an array or object is open.
    ZDynamicObject Take();

    /// Drops everything.
    void Clear();

private:
    struct SOpen
    {
        uint32 m_nFirst; // of its children, among those that wait
        bool m_bObject;
    };

    void Add(STypeID* pType, void* pHeld);
    void Begin(bool bObject);

    TArray<SOpen> m_open;
    TArray<ZDynamicObject> m_elements;
    TArray<SDynamicObjectKeyValuePair> m_properties;
    bool m_bObject = false; // whether the innermost is an object
};
