// Operations on a container beside its model, in an order and with values that the bytes decide.
#pragma once

#include "tests/support/containermodel.h"

#include <cstdlib>

template <class TModelled>
void Operate(const uint8* pData, const uint8* pEnd)
{
    const auto below = [&](uint64 n) { return pData == pEnd ? 0 : *pData++ % n; };
    const auto demand = [](const std::string& difference)
    {
        if (difference.empty())
            return;
        std::fputs(difference.c_str(), stderr);
        std::abort();
    };
    JournalAllocator allocator;
    GetMemoryManager()->InstallAllocator(ALLOCATOR_NORMAL, &allocator);
    {
        TModelled modelled;
        while (pData != pEnd)
            demand(modelled.Step(below));
        demand(modelled.Finish());
    }
    GetMemoryManager()->UnInstallAllocator(ALLOCATOR_NORMAL);
}

// The first byte picks the container.
template <class... TModelled>
int OperateOneOf(const uint8* pData, std::size_t nSize)
{
    constexpr void (*kBodies[])(const uint8*, const uint8*) = {&Operate<TModelled>...};
    if (nSize != 0)
        kBodies[pData[0] % sizeof...(TModelled)](pData + 1, pData + nSize);
    return 0;
}
