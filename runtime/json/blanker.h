// Inside runtime.json: comments and trailing commas.
#pragma once

namespace json
{
/// Overwrites comments and trailing commas with spaces, so that all else keeps its place. Returns the start of a
/// comment that has no end, or null.
const char* Blank(char* p, const char* pEnd, bool bComments, bool bTrailingCommas);
} // namespace json
