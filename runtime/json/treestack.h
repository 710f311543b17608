// Inside runtime.json: builds a tree while the text is read.
#pragma once

#include "core/dynamic/dynamicobject.h"

#include <string_view>

namespace json
{
/// The containers that are open, the innermost last.
class ZTreeStack
{
public:
    void Add(ZDynamicObject&& value)
    {
        SOpen& open = m_open.End()[-1];
        if (open.m_value.IsArray())
            open.m_value.PushBack(std::move(value));
        else
            open.m_value.Set(open.m_key, std::move(value));
    }

    /// Sets the key of the next value of an object. If bUnique, returns false if the object has it already.
    bool Key(std::string_view key, bool bUnique)
    {
        SOpen& open = m_open.End()[-1];
        open.m_key = ZString(key);
        return !bUnique || !open.m_value.Contains(open.m_key);
    }

    void Begin(bool bObject) { m_open.Add({bObject ? ZDynamicObject::Object() : ZDynamicObject::Array(), ZString()}); }

    /// Closes the innermost container and adds it to the next one; the outermost is the result.
    ZDynamicObject End()
    {
        ZDynamicObject closed = std::move(m_open.End()[-1].m_value);
        m_open.Erase(m_open.End() - 1);
        if (m_open.IsEmpty())
            return closed;
        Add(std::move(closed));
        return {};
    }

private:
    struct SOpen
    {
        ZDynamicObject m_value;
        ZString m_key;
    };

    TArray<SOpen> m_open;
};
} // namespace json
