#include "tests/support/containers.h"
#include "core/containers/seededhash.h"
#include "tests/refusals/refuse.h"

struct SMoveOnly
{
    SMoveOnly() = default;
    SMoveOnly(SMoveOnly&&) = default;
    bool operator<(const SMoveOnly&) const;
};

// Has no order and no hash.
struct alignas(32) SWide
{
    char m_acBytes[32];
    bool operator==(const SWide&) const = default;
};

void Use()
{
    KX_REFUSE(LIST_OF_WIDE, "keep elements of a wider alignment in a TArray", TList<SWide> refused);
    KX_REFUSE(SLIST_OF_WIDE, "keep elements of a wider alignment in a TArray", TSList<SWide> refused);
    KX_REFUSE(BLOCK_ARRAY_OF_WIDE, "keep elements of a wider alignment in a TArray", TBlockArray<SWide> refused);
    KX_REFUSE(HASH_SET_OF_WIDE, "keep elements of a wider alignment in a TMap or TSet",
              THashSet<SWide> refused{SWide()});
    [[maybe_unused]] SMoveOnly moveOnly{};
    KX_REFUSE(LIST_INSERT_OF_MOVE_ONLY, "bring in what can only be moved by Emplace",
              TList<SMoveOnly>().Insert(moveOnly));
    KX_REFUSE(SLIST_INSERT_OF_MOVE_ONLY, "bring in what can only be moved by Emplace",
              TSList<SMoveOnly>().Insert(moveOnly));
    KX_REFUSE(MAX_ARRAY_ADD_OF_MOVE_ONLY, "bring in what can only be moved by Emplace",
              TMaxArray<SMoveOnly, 4>().Add(moveOnly));
    KX_REFUSE(COPIED_LIST_OF_MOVE_ONLY, "and move the container", const TList<SMoveOnly> list;
              TList<SMoveOnly> refused(list));
    KX_REFUSE(COPIED_BLOCK_ARRAY_OF_MOVE_ONLY, "and move the container", const TBlockArray<SMoveOnly> array;
              TBlockArray<SMoveOnly> refused(array));
    using MapOfMoveOnly [[maybe_unused]] = TMap<int, SMoveOnly>;
    using HashMapOfMoveOnly [[maybe_unused]] = THashMap<int, SMoveOnly>;
    KX_REFUSE(SET_INSERT_OF_MOVE_ONLY, "bring in what can only be moved by Emplace",
              TSet<SMoveOnly>().Insert(moveOnly));
    KX_REFUSE(MAP_INSERT_OF_MOVE_ONLY, "bring in what can only be moved by Emplace",
              MapOfMoveOnly().Insert(1, moveOnly));
    KX_REFUSE(HASH_MAP_INSERT_OF_MOVE_ONLY, "bring in what can only be moved by Emplace",
              HashMapOfMoveOnly().Insert(1, moveOnly));
    KX_REFUSE(COPIED_MAP_OF_MOVE_ONLY, "and move the container", const MapOfMoveOnly map; MapOfMoveOnly refused(map));
    KX_REFUSE(COPIED_HASH_MAP_OF_MOVE_ONLY, "and move the container", const HashMapOfMoveOnly map;
              HashMapOfMoveOnly refused(map));
    KX_REFUSE(FIND_OF_ANOTHER_TYPE, "no matching (member )?function", THashSet<std::string_view>().Find(5));
    KX_REFUSE(MAX_ARRAY_OF_NONE, "give it room for at least one element", TMaxArray<int, 0> refused);
    KX_REFUSE(SET_WITHOUT_ORDER, "compares by operator<: declare one beside the class of the element",
              TSet<SWide> refused);
    KX_REFUSE(MAP_WITHOUT_ORDER, "compares by operator<: declare one beside the class of the element",
              TMap<SWide, int> refused);
    KX_REFUSE(HASH_SET_WITHOUT_HASH, "declare uint32 HashKey", THashSet<SWide> refused{SWide()});
    KX_REFUSE(HASH_SET_OF_POINTERS, "make the key a ZString or a std::string_view", THashSet<const char*> refused{""});
    KX_REFUSE(SEEDED_SET_OF_POINTERS, "hashes strings, integers and enumerations",
              THashSet<char*, TSeededHashSetPolicy<char*>> refused{nullptr});
    KX_REFUSE(DROPPED_RESULT, "ignoring return value", TList<int>().IsEmpty());
}
