// Inside runtime.json: the fast way to read a text. simdjson's DOM parser checks the text and writes its values one
// after the other on a tape, with the number of children before each array and object. Walking the tape is the least
// that a tree can cost.
//
//   {"crew": [7]}     { 1 | "crew" | [ 1 | l | 7 | ] | } | r        a word each: a letter, and where or how much
//
// The parser does not say where a text is wrong, and stops at a depth and at integers of more than 64 bits. Such texts
// are left to ZReader, which reads them at half the speed.
#pragma once

#include "core/dynamic/treebuilder.h"
#include "runtime/json/json.h"
#include "runtime/json/keys.h"

#include <simdjson.h>

#include <string_view>

namespace json
{
class ZTapeReader
{
public:
    /// Gives the values of the text to the builder; returns false if that did not work. There must be
    /// SIMDJSON_PADDING readable bytes after the text, the first of which is no part of a number.
    bool Read(std::string_view text, const SReadOptions& options, ZKeys& keys, ZTreeBuilder& tree);

private:
    simdjson::dom::parser m_parser;
    TArray<bool> m_objects; // which of the open arrays and objects are objects
};
} // namespace json
