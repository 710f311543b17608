// What type identity asks of an object format, for a compiler whose system is not there to run the program.
#include "core/platform/gather.h"

struct SRecord
{
    int m_nValue;
};
KX_GATHERED(SRecord*, kxtype);

struct SHolder
{
    inline static SRecord ms_data = {1};
    KX_GATHERED_WORD(kxtype, SRecord*, ms_pWord, Word, &ms_data);
};

struct SAlways
{
    inline static SRecord ms_data = {2};
    KX_GATHERED_ALWAYS KX_GATHERED_WORD(kxtype, SRecord*, ms_pWord, Word, &ms_data);
};

KX_AT_UNLOAD(End)
{
    SHolder::ms_data.m_nValue = 0;
}

int Sum()
{
    int nSum = (*SHolder::Word())->m_nValue;
    for (SRecord** ppRecord = KX_GATHER_BEGIN(kxtype); ppRecord != KX_GATHER_END(kxtype); ++ppRecord)
        nSum += (*ppRecord)->m_nValue;
    return nSum;
}
