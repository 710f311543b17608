// Models of the five sequences; see containermodel.h.
#pragma once

#include "core/containers/array.h"
#include "core/containers/blockarray.h"
#include "core/containers/list.h"
#include "core/containers/maxarray.h"
#include "core/containers/slist.h"
#include "tests/support/containermodel.h"

#include <algorithm>
#include <concepts>

// The values, and the steps of an element's life. An insertion takes its value from element nFrom, or is given it where
// nFrom is kNone.
template <class TElement>
struct SequenceModel
{
    using Element = TElement;

    static constexpr size_t kNone = SIZE_MAX;
    static constexpr bool kMoves = std::is_same_v<TElement, Logged>;
    // Whether an element of the sequence may be the rvalue that is inserted into it.
    static constexpr bool kMovesItsOwn = true;

    size_t Size() const { return m_values.size(); }
    static bool IsFull() { return false; }
    static bool Fits(const auto&) { return true; }
    Entries Walk() const
    {
        Entries walk;
        for (const int nValue : m_values)
            walk.push_back({nValue});
        return walk;
    }
    int& Source(size_t nFrom, int& nValue) { return nFrom == kNone ? nValue : m_values[nFrom]; }

    static int Made(int& nFrom, bool bMove)
    {
        bMove = bMove && kMoves;
        Expect(bMove ? "move " : "copy ", nFrom);
        return bMove ? std::exchange(nFrom, -1) : nFrom;
    }
    static void Assign(int& nTo, int& nFrom, bool bMove)
    {
        bMove = bMove && kMoves;
        Expect(std::to_string(nTo) + (bMove ? " = move " : " = copy "), nFrom);
        nTo = bMove ? std::exchange(nFrom, -1) : nFrom;
    }
    void Put(size_t nPos, int nValue) { m_values.insert(m_values.begin() + static_cast<std::ptrdiff_t>(nPos), nValue); }

    // The last element goes one place up and the others follow, down to nPos.
    void ShiftUp(size_t nPos, bool bMove)
    {
        m_values.push_back(Made(m_values.back(), bMove));
        for (size_t i = Size() - 2; i > nPos; --i)
            Assign(m_values[i], m_values[i - 1], bMove);
    }
    void InsertInPlace(size_t nPos, size_t nFrom, int nValue, bool bMove, bool bShiftsByMove)
    {
        if (nPos == Size())
        {
            m_values.push_back(Made(Source(nFrom, nValue), bMove));
            return;
        }
        ShiftUp(nPos, bShiftsByMove);
        Assign(m_values[nPos], Source(nFrom != kNone && nFrom >= nPos ? nFrom + 1 : nFrom, nValue), bMove);
    }
    void EraseInPlace(size_t nPos, bool bMove)
    {
        for (size_t i = nPos + 1; i < Size(); ++i)
            Assign(m_values[i - 1], m_values[i], bMove);
        Expect("delete ", m_values.back());
        m_values.pop_back();
    }
    void Relocate()
    {
        for (int& nValue : m_values)
        {
            const int nMoved = Made(nValue, true);
            Expect("delete ", nValue);
            nValue = nMoved;
        }
    }
    void CopyElements(const SequenceModel& other)
    {
        for (int nValue : other.m_values)
            m_values.push_back(Made(nValue, false));
    }
    void Clear()
    {
        for (const int nValue : m_values)
            Expect("delete ", nValue);
        m_values.clear();
    }

    std::vector<int> m_values;
};

template <class TElement>
struct ArrayModel : SequenceModel<TElement>
{
    using Base = SequenceModel<TElement>;

    void Insert(size_t nPos, size_t nFrom, int nValue, bool bMove)
    {
        if (Base::Size() != m_nCapacity)
            return Base::InsertInPlace(nPos, nFrom, nValue, bMove, true);
        const size_t nCapacity = m_nCapacity + m_nCapacity / 4 + 1;
        ExpectAllocation(nCapacity * 4, 4);
        const int nMade = Base::Made(Base::Source(nFrom, nValue), bMove);
        Base::Relocate();
        ExpectFree(std::exchange(m_nCapacity, nCapacity) * 4);
        Base::Put(nPos, nMade);
    }
    void Erase(size_t nPos) { Base::EraseInPlace(nPos, true); }
    void Reserve(size_t nCapacity, bool bExact)
    {
        if (nCapacity <= m_nCapacity && (!bExact || nCapacity < Base::Size()))
            return;
        if (nCapacity != 0)
            ExpectAllocation(nCapacity * 4, 4);
        Base::Relocate();
        ExpectFree(std::exchange(m_nCapacity, nCapacity) * 4);
    }
    void CopyAssign(const ArrayModel& other)
    {
        Base::Clear();
        Reserve(other.Size(), false);
        Base::CopyElements(other);
    }
    void CopyConstruct(const ArrayModel& other)
    {
        m_nCapacity = other.Size();
        if (m_nCapacity != 0)
            ExpectAllocation(m_nCapacity * 4, 4);
        Base::CopyElements(other);
    }
    void Die()
    {
        Base::Clear();
        ExpectFree(m_nCapacity * 4);
    }
    bool Fits(const TArray<TElement>& array) const { return array.Capacity() == m_nCapacity; }

    size_t m_nCapacity = 0;
};

struct MaxArrayModel : SequenceModel<Logged>
{
    void Insert(size_t nPos, size_t nFrom, int nValue, bool) { InsertInPlace(nPos, nFrom, nValue, false, false); }
    void Erase(size_t nPos) { EraseInPlace(nPos, false); }
    void CopyAssign(const MaxArrayModel& other)
    {
        Clear();
        CopyElements(other);
    }
    void TakeElements(MaxArrayModel& other)
    {
        other.Relocate();
        m_values = std::exchange(other.m_values, {});
    }
    void Die() { Clear(); }
    bool IsFull() const { return Size() == 10; }
};

struct BlockArrayModel : SequenceModel<Logged>
{
    static constexpr bool kMovesItsOwn = false;

    void GrowIfTight()
    {
        if (m_blocks.size() * 16 - Size() >= 16)
            return;
        const size_t nExtra = m_blocks.empty() ? 8 : m_blocks.size() / 2;
        ExpectAllocation((m_blocks.size() + nExtra) * sizeof(void*), 16);
        ExpectFree(m_blocks.size() * sizeof(void*));
        std::rotate(m_blocks.begin(), m_blocks.begin() + static_cast<std::ptrdiff_t>(m_nFirst / 16), m_blocks.end());
        m_blocks.resize(m_blocks.size() + nExtra, false);
        m_nFirst %= 16;
    }
    void Use(size_t nBlock)
    {
        if (!m_blocks[nBlock])
            ExpectAllocation(size_t{16} * 4, 16);
        m_blocks[nBlock] = true;
    }
    void BackSlot()
    {
        if ((m_nFirst + Size()) % 16 == 0)
            GrowIfTight();
        Use((m_nFirst + Size()) / 16 % m_blocks.size());
    }
    void FrontSlot()
    {
        if (m_nFirst % 16 == 0)
            GrowIfTight();
        m_nFirst = (m_nFirst == 0 ? m_blocks.size() * 16 : m_nFirst) - 1;
        Use(m_nFirst / 16);
    }
    void Insert(size_t nPos, size_t nFrom, int nValue, bool bMove)
    {
        const bool bBack = nPos != 0 && (nPos == Size() || nPos >= Size() / 2);
        bBack ? BackSlot() : FrontSlot();
        if (nPos == 0 || nPos == Size())
            return Put(nPos, Made(Source(nFrom, nValue), bMove));
        if (bBack)
            ShiftUp(nPos, bMove);
        else
        {
            Put(0, Made(m_values.front(), bMove));
            for (size_t i = 1; i < nPos; ++i)
                Assign(m_values[i], m_values[i + 1], bMove);
            nFrom += nFrom == kNone ? 0 : 1;
        }
        // The value is read after the shift, and moved over an element that nobody has destroyed.
        if (bMove)
            m_values[nPos] = Made(Source(nFrom, nValue), true);
        else
            Assign(m_values[nPos], Source(nFrom, nValue), false);
    }
    void Erase(size_t nPos)
    {
        const bool bFront = nPos < Size() / 2;
        if (bFront)
        {
            for (size_t i = nPos; i > 0; --i)
                Assign(m_values[i], m_values[i - 1], true);
            Expect("delete ", m_values.front());
            m_values.erase(m_values.begin());
        }
        else
            EraseInPlace(nPos, true);
        m_nFirst = Size() == 0 ? 0 : (m_nFirst + (bFront ? 1 : 0)) % (m_blocks.size() * 16);
    }
    void Clear()
    {
        SequenceModel::Clear();
        m_nFirst = 0;
    }
    void CopyAssign(const BlockArrayModel& other)
    {
        Clear();
        for (int nValue : other.m_values)
        {
            BackSlot();
            m_values.push_back(Made(nValue, false));
        }
    }
    void Die()
    {
        Clear();
        for (const bool bUsed : m_blocks)
            ExpectFree(bUsed ? size_t{16} * 4 : 0);
        if (!m_blocks.empty())
            ExpectFree(m_blocks.size() * sizeof(void*));
    }

    size_t m_nFirst = 0;
    std::vector<bool> m_blocks; // whether the table's entries have a block
};

template <size_t nNode, bool bReusesNodes>
struct ListModel : SequenceModel<Logged>
{
    void Insert(size_t nPos, size_t nFrom, int nValue, bool)
    {
        ExpectAllocation(nNode, 16);
        Put(nPos, Made(Source(nFrom, nValue), false));
    }
    void Erase(size_t nPos)
    {
        Expect("delete ", m_values[nPos]);
        ExpectFree(nNode);
        m_values.erase(m_values.begin() + static_cast<std::ptrdiff_t>(nPos));
    }
    void Clear()
    {
        while (Size() > 0)
            Erase(0);
    }
    void CopyAssign(const ListModel& other)
    {
        if (!bReusesNodes)
            Clear();
        std::vector<int> values = other.m_values;
        for (size_t i = 0; i < std::min(Size(), values.size()); ++i)
            Assign(m_values[i], values[i], false);
        while (Size() > values.size())
            Erase(values.size());
        while (Size() < values.size())
            Insert(Size(), kNone, values[Size()], false);
    }
    void Die() { Clear(); }
};

using ModelledArray = Modelled<TArray<Logged>, ArrayModel<Logged>>;
using ModelledArrayOfCopies = Modelled<TArray<LoggedCopy>, ArrayModel<LoggedCopy>>;
using ModelledMaxArray = Modelled<TMaxArray<Logged, 10>, MaxArrayModel>;
using ModelledBlockArray = Modelled<TBlockArray<Logged>, BlockArrayModel>;
using ModelledList = Modelled<TList<Logged>, ListModel<24, true>>;
using ModelledSList = Modelled<TSList<Logged>, ListModel<16, false>>;

template <class TSequence, class TModel, class TElement, class TBelow>
requires std::derived_from<TModel, SequenceModel<TElement>>
bool StepElement(TSequence& sequence, TModel& model, SArguments<TElement>& arguments, TBelow&& below)
{
    const size_t nSize = model.Size();
    const size_t nPos = below(4) == 0 ? 0 : below(3) == 0 ? nSize : below(nSize + 1);
    if constexpr (requires { sequence.Reserve(1); })
    {
        if (below(16) == 0)
        {
            const size_t nCapacity = below(2 * nSize + 3);
            const bool bExact = below(2) == 0;
            model.Reserve(nCapacity, bExact);
            return sequence.Reserve(nCapacity, bExact) == model.m_nCapacity;
        }
    }
    if (below(10) < (arguments.m_bGrow ? 7u : 3u))
    {
        if (model.IsFull())
            return true;
        const size_t nFrom = nSize != 0 && below(4) == 0 ? below(nSize) : TModel::kNone;
        const bool bMove = below(2) == 0 && (nFrom == TModel::kNone || TModel::kMovesItsOwn);
        model.Insert(nPos, nFrom, arguments.m_value.m_nValue, bMove);
        TElement& value = nFrom == TModel::kNone ? arguments.m_value : *At(sequence, nFrom);
        if constexpr (requires { sequence.Add(value); })
        {
            if (nPos == nSize && below(2) == 0)
            {
                const TElement* pAdded = &(bMove ? sequence.Add(std::move(value)) : sequence.Add(std::as_const(value)));
                return pAdded == &*At(sequence, nPos);
            }
        }
        const typename TSequence::const_iterator inserted =
            bMove ? sequence.Insert(At(sequence, nPos), std::move(value))
                  : sequence.Insert(At(sequence, nPos), std::as_const(value));
        return inserted == At(sequence, nPos) && std::next(inserted) == At(sequence, nPos + 1);
    }
    if (nPos == nSize)
        return true;
    model.Erase(nPos);
    if constexpr (requires { sequence.Erase(nPos); })
    {
        if (below(2) == 0)
        {
            sequence.Erase(nPos);
            return true;
        }
    }
    const auto next = sequence.Erase(At(sequence, nPos));
    return next == At(sequence, nPos);
}
