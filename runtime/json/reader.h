// Inside runtime.json: reads one text after the other in the same memory.
#pragma once

#include "runtime/json/json.h"

#include <memory>

namespace json
{
class ZReader
{
public:
    explicit ZReader(const SReadOptions& options);
    ~ZReader();
    ZReader(const ZReader&) = delete;
    ZReader& operator=(const ZReader&) = delete;

    /// As json::Read.
    bool Read(std::string_view text, ZDynamicObject& result, SError* pError);

private:
    struct SState;
    std::unique_ptr<SState> m_pState;
};

/// Fills in the error for the byte at nOffset.
void Locate(std::string_view text, uint64 nOffset, const char* pszMessage, SError& error);
} // namespace json
