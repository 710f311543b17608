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
    const char* pByte = static_cast<const char*>(pBytes);
    const char* pTail = pByte + nSize / 8 * 8;
    for (; pByte != pTail; pByte += 8)
    {
        uint64 nWord = 0;
        std::memcpy(&nWord, pByte, 8);
        state.Add(nWord);
    }
    // The last word has the remaining bytes and, at its top, the size.
    uint64 nLast = nSize << 56;
    for (uint64 i = 0; i < nSize % 8; ++i)
        nLast |= uint64{static_cast<uint8>(pTail[i])} << (8 * i);
    state.Add(nLast);

    state.m_c ^= 0xFF;
    for (int i = 0; i < 3; ++i)
        state.Round();
    return state.m_a ^ state.m_b ^ state.m_c ^ state.m_d;
}
