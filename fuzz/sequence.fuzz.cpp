// The five sequences.
#include "core/containers/array.h"
#include "core/containers/blockarray.h"
#include "core/containers/list.h"
#include "core/containers/maxarray.h"
#include "core/containers/slist.h"
#include "fuzz/operations.h"

namespace
{
template <class TSequence>
struct TPlaced
{
    void Step(auto below)
    {
        const uint64 nPlace = below(m_model.size() + 1);
        const auto place = m_model.begin() + static_cast<std::ptrdiff_t>(nPlace);
        auto pos = m_container.Begin();
        for (uint64 i = 0; i < nPlace; ++i)
            ++pos;
        const int nValue = static_cast<int>(below(256));
        if (below(3) != 0 && m_model.size() < 200)
        {
            Demand(*m_container.Insert(pos, nValue) == nValue);
            m_model.insert(place, nValue);
        }
        else if (nPlace < m_model.size())
        {
            m_container.Erase(pos);
            m_model.erase(place);
        }
    }

    bool Agrees() const
    {
        return m_container.Size() == m_model.size() && m_container.Validate()
               && std::equal(m_model.begin(), m_model.end(), m_container.begin());
    }

    TSequence m_container;
    std::vector<int> m_model;
};
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8* pData, std::size_t nSize)
{
    return OperateOneOf<TPlaced<TArray<int>>, TPlaced<TMaxArray<int, 200>>, TPlaced<TBlockArray<int>>,
                        TPlaced<TList<int>>, TPlaced<TSList<int>>>(pData, nSize);
}
