#include "core/dynamic/variant.h"

#include "core/dynamic/heldvalue.h"

alignas(8) constinit unsigned char kx::detail::g_acSharedNull[16] = {};

void* kx::detail::NewWordCell(uint64 nWord)
{
    return NewWord(nWord);
}

bool kx::detail::EqualValues(const ZObjectRef& left, const ZObjectRef& right)
{
    STypeID* pType = left.Type();
    if (pType != right.Type())
        return false;
    if (pType == nullptr)
        return true;
    const auto pfnEqual = ValueOperationsOf(*pType).Equal;
    const auto pfnEquals = pfnEqual != nullptr ? pfnEqual : pType->Operations().Equals;
    return pfnEquals != nullptr && pfnEquals(left.Data(), right.Data());
}

ZVariant::ZVariant(ZString&& text) noexcept
    : ZVariantRef(::new (kx::detail::ZCellHeap::Allocate(sizeof(ZString))) ZString(std::move(text)),
                  GetTypeID<ZString>())
{
}

ZVariant::ZVariant(const ZVariant& other) : ZVariant()
{
    if (other.m_pType != nullptr)
    {
        m_pData = kx::detail::CopyHeldValue(*other.m_pType, other.m_pData);
        m_pType = other.m_pType;
    }
}

ZVariant& ZVariant::operator=(const ZVariant& other)
{
    if (this != &other)
    {
        STypeID* pType = other.m_pType;
        Adopt(pType, pType != nullptr ? kx::detail::CopyHeldValue(*pType, other.m_pData) : nullptr);
    }
    return *this;
}

ZVariant& ZVariant::operator=(ZVariant&& other) noexcept
{
    // A variant that is moved onto itself lets go of its value and takes it back.
    kx::detail::BreakIfPart(*this, other.m_pType, other.m_pData);
    ZVariant moved = std::move(other);
    Adopt(std::exchange(moved.m_pType, nullptr), std::exchange(moved.m_pData, nullptr));
    return *this;
}

void ZVariant::Set(STypeID* pType, const void* pValue)
{
    if (pType == nullptr)
        return Adopt(nullptr, nullptr);
    const bool bKnown = pType->IsDescribed() && pValue != nullptr;
    kx::detail::BreakUnless(bKnown);
    if (bKnown)
        Adopt(pType, kx::detail::CopyValue(*pType, pValue));
    else
        Adopt(nullptr, nullptr);
}

void ZVariant::Adopt(STypeID* pType, void* pData)
{
    STypeID* pOldType = pType;
    void* pOldData = pData;
    const bool bShared = static_cast<void*>(this) == kx::detail::g_acSharedNull;
    kx::detail::BreakUnless(!bShared);
    if (!bShared)
    {
        pOldType = std::exchange(m_pType, pType);
        pOldData = std::exchange(m_pData, pData);
    }
    if (pOldType != nullptr)
        Destroy(pOldType, pOldData);
}

void ZVariant::Destroy(STypeID* pType, void* pData)
{
    kx::detail::DestroyHeldValue(*pType, pData);
}
