#include "core/containers/seededhash.h"

#include <bit>
#include <cstring>
#include <random>

namespace
{
// The state of SipHash. Round() is its permutation.
struct SSipState
{
    void Round()
    {
        m_a += m_b;
        m_c += m_d;
        m_b = std::rotl(m_b, 13) ^ m_a;
        m_d = std::rotl(m_d, 16) ^ m_c;
        m_a = std::rotl(m_a, 32) + m_d;
        m_c += m_b;
        m_d = std::rotl(m_d, 21) ^ m_a;
        m_b = std::rotl(m_b, 17) ^ m_c;
        m_c = std::rotl(m_c, 32);
    }

    void Add(uint64 nWord)
    {
        m_d ^= nWord;
        Round();
        m_a ^= nWord;
    }

    uint64 m_a, m_b, m_c, m_d;
};

uint64 WordAt(const char* pBytes)
{
    uint64 nWord = 0;
    std::memcpy(&nWord, pBytes, sizeof(nWord));
    return nWord;
}
} // namespace

const SHashSeed& GetHashSeed() noexcept
{
    static const SHashSeed seed = []
    {
        std::random_device device;
        const auto draw = [&device] { return uint64{device()} << 32 | device(); };
        return SHashSeed{draw(), draw()};
    }();
    return seed;
}

uint64 SeededHash(const void* pBytes, uint64 nSize, const SHashSeed& seed) noexcept
{
    // The constants are those of the algorithm: "somepseudorandomlygeneratedbytes" as four words.
    SSipState state = {seed.m_nFirst ^ 0x736F6D6570736575, seed.m_nSecond ^ 0x646F72616E646F6D,
                       seed.m_nFirst ^ 0x6C7967656E657261, seed.m_nSecond ^ 0x7465646279746573};
    const char* const pBegin = static_cast<const char*>(pBytes);
    const char* const pTail = pBegin + nSize / 8 * 8;
    for (const char* p = pBegin; p != pTail; p += 8)
        state.Add(WordAt(p));

    // The last word has the remaining bytes and, at its top, the size. They are the end of the last eight bytes.
    const uint64 nLeft = nSize % 8;
    uint64 nLast = 0;
    if (nLeft != 0 && nSize > 8)
        nLast = WordAt(pTail + nLeft - 8) >> (64 - nLeft * 8);
    else
    {
        for (uint64 i = 0; i < nLeft; ++i)
            nLast |= uint64{static_cast<uint8>(pTail[i])} << (8 * i);
    }
    state.Add(nLast | nSize << 56);

    state.m_c ^= 0xFF;
    for (int i = 0; i < 3; ++i)
        state.Round();
    return state.m_a ^ state.m_b ^ state.m_c ^ state.m_d;
}
