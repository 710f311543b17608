// What the five sequences share beyond the contract of all containers. All of it is built on their own operations, and
// none of it adds a field.
#pragma once

#include "core/containers/comparewalks.h"
#include "core/containers/lifetime.h"
#include "core/containers/reverseiterator.h"

#include <concepts>
#include <cstddef>
#include <initializer_list>

namespace kx::detail
{
/// The base of the sequences; TDerived is the sequence itself.
template <class TDerived, class T>
class TSequence
{
public:
    /// The names that generic code expects.
    using reference = T&;
    using const_reference = const T&;
    using size_type = uint32;
    using difference_type = std::ptrdiff_t;

    /// Return the first element; trigger the debug break if there is none.
    [[nodiscard]] T& First() KX_LIFETIMEBOUND { return *NotEmpty(Self()).Begin(); }
    [[nodiscard]] const T& First() const KX_LIFETIMEBOUND { return *NotEmpty(Self()).Begin(); }

    /// Return Size() and IsEmpty() under their standard names.
    [[nodiscard]] uint32 size() const { return Self().Size(); }
    [[nodiscard]] bool empty() const { return Self().IsEmpty(); }

    /// Returns whether an element equals the value. Linear.
    template <class TValue = T>
    [[nodiscard]] bool Contains(const TValue& value) const
    {
        return IndexOf(value) >= 0;
    }

    /// Returns the index of the first element that equals the value, or -1 if there is none. Linear.
    template <class TValue = T>
    [[nodiscard]] int64 IndexOf(const TValue& value) const noexcept
    {
        int64 nIndex = 0;
        for (const T& element : Self())
        {
            if (element == value)
                return nIndex;
            ++nIndex;
        }
        return -1;
    }

    /// Returns whether sizes and elements are equal, in order, by the element's own ==.
    [[nodiscard]] friend bool operator==(const TDerived& first,
                                         const TDerived& second) requires std::equality_comparable<T>
    {
        return first.Size() == second.Size() && EqualWalks(first, second);
    }

    /// Compares element by element, by the element's own <=> or else by its <; a sequence that ends first is less.
    [[nodiscard]] friend auto operator<=>(const TDerived& first, const TDerived& second) requires COrdered<T>
    {
        return detail::CompareWalks(first, second);
    }

protected:
    // A sequence is made as a whole, never this part of it alone.
    TSequence() = default;
    TSequence(const TSequence&) = default;
    TSequence& operator=(const TSequence&) = default;
    ~TSequence() = default;

    TDerived& Self() { return static_cast<TDerived&>(*this); }
    const TDerived& Self() const { return static_cast<const TDerived&>(*this); }

    template <class TSelf>
    static TSelf& NotEmpty(TSelf& self)
    {
        detail::BreakUnless(!self.IsEmpty());
        return self;
    }

private:
    static bool EqualWalks(const TDerived& first, const TDerived& second) noexcept
    {
        auto other = second.Begin();
        for (const T& element : first)
        {
            if (!(element == *other))
                return false;
            ++other;
        }
        return true;
    }
};

/// The base of the two contiguous sequences.
/// TDerived::TShift says how elements move; see InsertShifting. TDerived::MakeGap makes room that counts as elements at
/// once, and TDerived::SetEnd changes the size.
template <class TDerived, class T>
class TContiguousSequence : public TSequence<TDerived, T>
{
    using TBase = TSequence<TDerived, T>;
    using TBase::NotEmpty;
    using TBase::Self;

public:
    /// Return the last element; trigger the debug break if there is none.
    [[nodiscard]] T& Last() KX_LIFETIMEBOUND { return NotEmpty(Self()).End()[-1]; }
    [[nodiscard]] const T& Last() const KX_LIFETIMEBOUND { return NotEmpty(Self()).End()[-1]; }

    /// Return iterators for walking backwards: to the last element, and past the first one.
    [[nodiscard]] auto rbegin() KX_LIFETIMEBOUND { return TReverseIterator<T*>(Self().End()); }
    [[nodiscard]] auto rend() KX_LIFETIMEBOUND { return TReverseIterator<T*>(Self().Begin()); }
    [[nodiscard]] auto rbegin() const KX_LIFETIMEBOUND { return TReverseIterator<const T*>(Self().End()); }
    [[nodiscard]] auto rend() const KX_LIFETIMEBOUND { return TReverseIterator<const T*>(Self().Begin()); }

    /// Removes the last element; triggers the debug break if there is none.
    void Pop()
    {
        T* pLast = NotEmpty(Self()).End() - 1;
        detail::DestroyRange(pLast, pLast + 1);
        Self().SetEnd(pLast);
    }

    /// Inserts before pos an element that is constructed from the arguments, and returns it.
    /// Checks and costs are those of Insert. Before other elements, the element is made first and then inserted, so the
    /// arguments may refer to elements of this array.
    template <class... TArgs>
    T* EmplaceAt(const T* pos, TArgs&&... args)
    {
        if (pos == Self().End())
            return detail::PointerTo(Self().Emplace(std::forward<TArgs>(args)...));
        return Self().InsertAt(const_cast<T*>(pos), detail::MakeElement<T>(std::forward<TArgs>(args)...));
    }

    /// Appends an element for each value of a range, constructed from the value.
    /// The range is anything that a range-based for walks, twice if it has no size(), or a list in braces, but no part
    /// of this array.
    template <class TRange = std::initializer_list<T>>
    void AddRange(TRange&& range)
    {
        InsertRange(Self().End(), std::forward<TRange>(range));
    }

    /// Inserts the values of a range before pos and returns the first one, or pos if there are none.
    /// Triggers the debug break as Insert does. Reallocates at most once. The elements from pos on are relocated. The
    /// range is one that AddRange takes.
    template <class TRange = std::initializer_list<T>>
    T* InsertRange(const T* pos, TRange&& range)
    {
        T* pGap = Self().MakeGap(const_cast<T*>(pos), CountOf(range));
        detail::ConstructFrom(pGap, range);
        return pGap;
    }

    /// Removes the element at a read-only position, as the other Erase does.
    template <std::same_as<const T> TConst>
    T* Erase(TConst* pos)
    {
        return Self().Erase(const_cast<T*>(pos));
    }

    /// Removes [first, last) and returns the position of the element that followed.
    /// Triggers the debug break if that is no part of this array. The elements after it move down by assignment, and
    /// the surplus last ones are destroyed, both in ascending order. Never reallocates.
    T* Erase(const T* first, const T* last)
    {
        const T* pBegin = Self().Begin();
        detail::BreakUnless(detail::IsInsertPosition(first, pBegin, last)
                            && detail::IsInsertPosition(last, pBegin, std::as_const(Self()).End()));
        T* pos = const_cast<T*>(first);
        Self().SetEnd(detail::EraseRangeShifting<typename TDerived::TShift>(pos, const_cast<T*>(last), Self().End()));
        return pos;
    }

    /// Removes the elements for which the predicate is true and returns their number.
    /// Calls predicate(const element) once for each, in order; it must not throw. The other elements move down as by
    /// the removal of a range. Linear.
    template <class TPredicate>
    uint32 EraseIf(TPredicate predicate)
    {
        const uint32 nOldSize = Self().Size();
        Self().SetEnd(detail::EraseMatching<typename TDerived::TShift>(Self().Begin(), Self().End(), predicate));
        return nOldSize - Self().Size();
    }

    /// Return the elements and the operations that the standard library's templates use, under their standard names.
    using value_type = T;
    [[nodiscard]] T* data() KX_LIFETIMEBOUND { return Self().Begin(); }
    [[nodiscard]] const T* data() const KX_LIFETIMEBOUND { return Self().Begin(); }
    [[nodiscard]] T& front() KX_LIFETIMEBOUND { return this->First(); }
    [[nodiscard]] const T& front() const KX_LIFETIMEBOUND { return this->First(); }
    [[nodiscard]] T& back() KX_LIFETIMEBOUND { return Last(); }
    [[nodiscard]] const T& back() const KX_LIFETIMEBOUND { return Last(); }
    void push_back(const T& value) { Self().Add(value); }
    void push_back(T&& value) { Self().Emplace(std::move(value)); }
    template <class... TArgs>
    T& emplace_back(TArgs&&... args)
    {
        return Self().Emplace(std::forward<TArgs>(args)...);
    }
    void pop_back() { Pop(); }

private:
    template <class TRange>
    static uint64 CountOf(TRange& range)
    {
        if constexpr (requires { range.size(); })
            return static_cast<uint64>(range.size());
        else
        {
            uint64 nCount = 0;
            for ([[maybe_unused]] auto&& value : range)
                ++nCount;
            return nCount;
        }
    }
};
} // namespace kx::detail
