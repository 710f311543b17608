#include "core/containers/redblacktree.h"

namespace kx::detail
{
static_assert(offsetof(SRedBlackTreeLinks, m_nColor) == 0 && offsetof(SRedBlackTreeLinks, m_pParent) == 8
                  && offsetof(SRedBlackTreeLinks, m_pChild) == 16 && sizeof(SRedBlackTreeLinks) == 32,
              "the links are the layout that debugger views rely on");

namespace
{
using Links = SRedBlackTreeLinks;

bool IsRed(const Links* pNode)
{
    return pNode != nullptr && pNode->m_nColor == kRed;
}

// Puts pNew, which may be null, in the place of pOld below pParent. Both links are checked, because a header has its
// root on both sides.
void ReplaceChild(Links* pParent, const Links* pOld, Links* pNew)
{
    for (Links*& pChild : pParent->m_pChild)
    {
        if (pChild == pOld)
            pChild = pNew;
    }
}

void SetParent(Links* pNode, Links* pParent)
{
    if (pNode != nullptr)
        pNode->m_pParent = pParent;
}

// Rotates pNode towards nSide: its child on the other side takes its place, and pNode becomes that child's child on
// nSide.
void Rotate(Links* pNode, uint32 nSide)
{
    Links* pParent = pNode->m_pParent;
    Links* pUp = pNode->m_pChild[1 - nSide];
    Links* pAcross = pUp->m_pChild[nSide];
    ReplaceChild(pParent, pNode, pUp);
    pUp->m_pParent = pParent;
    pUp->m_pChild[nSide] = pNode;
    pNode->m_pParent = pUp;
    pNode->m_pChild[1 - nSide] = pAcross;
    SetParent(pAcross, pNode);
}

// Restores the colours when all paths through the link of pFix on nSide lack one black node.
void RestoreBlackHeight(Links* pFix, uint32 nSide, const Links* pHeader)
{
    for (;;)
    {
        Links* pShort = pFix->m_pChild[nSide];
        if (IsRed(pShort))
        {
            pShort->m_nColor = kBlack;
            return;
        }
        if (pFix == pHeader)
            return;

        const uint32 nOther = 1 - nSide;
        Links* pSibling = pFix->m_pChild[nOther];
        if (pSibling->m_nColor == kRed)
        {
            pSibling->m_nColor = kBlack;
            pFix->m_nColor = kRed;
            Rotate(pFix, nSide);
            pSibling = pFix->m_pChild[nOther];
        }
        if (IsRed(pSibling->m_pChild[0]) || IsRed(pSibling->m_pChild[1]))
        {
            if (!IsRed(pSibling->m_pChild[nOther]))
            {
                pSibling->m_pChild[nSide]->m_nColor = kBlack;
                pSibling->m_nColor = kRed;
                Rotate(pSibling, nOther);
                pSibling = pFix->m_pChild[nOther];
            }
            pSibling->m_nColor = pFix->m_nColor;
            pFix->m_nColor = kBlack;
            pSibling->m_pChild[nOther]->m_nColor = kBlack;
            Rotate(pFix, nSide);
            return;
        }
        pSibling->m_nColor = kRed;
        const Links* pChild = pFix;
        pFix = pFix->m_pParent;
        nSide = pFix->m_pChild[0] != pChild;
    }
}
} // namespace

void InsertNode(Links* pNode, Links* pParent, uint32 nSide, Links* pHeader)
{
    BreakUnless(nSide <= 1);
    BreakUnless(pParent->m_pChild[nSide] == nullptr);
    *pNode = {kRed, pParent, {nullptr, nullptr}};
    pParent->m_pChild[nSide] = pNode;
    if (pParent == pHeader)
        pHeader->m_pChild[1 - nSide] = pNode;

    while (pParent->m_nColor == kRed)
    {
        // A red node is not the root, so there is a grandparent.
        Links* pGrand = pParent->m_pParent;
        nSide = pGrand->m_pChild[0] != pParent;
        Links* pUncle = pGrand->m_pChild[1 - nSide];
        pGrand->m_nColor = kRed;
        if (IsRed(pUncle))
        {
            pParent->m_nColor = kBlack;
            pUncle->m_nColor = kBlack;
            pNode = pGrand;
            pParent = pGrand->m_pParent;
            continue;
        }
        if (pParent->m_pChild[nSide] != pNode)
        {
            Rotate(pParent, nSide);
            pParent = pNode;
        }
        pParent->m_nColor = kBlack;
        Rotate(pGrand, 1 - nSide);
        break;
    }
    pHeader->m_pChild[0]->m_nColor = kBlack;
}

void RemoveNode(Links* pNode, const Links* pHeader)
{
    Links* pParent = pNode->m_pParent;
    Links* pLeft = pNode->m_pChild[0];
    Links* pRight = pNode->m_pChild[1];
    uint32 nColor = pNode->m_nColor;

    // pHeir takes the place of the node. The paths through the link of pFix on nSide lose a node.
    Links* pHeir = pLeft;
    Links* pFix = pParent;
    uint32 nSide = pParent->m_pChild[0] != pNode;
    if (pRight != nullptr)
    {
        // The successor, which has no left child, takes the place and its colour. From here on, nColor is the colour
        // that is lost.
        pHeir = pRight;
        pFix = pRight;
        nSide = 1;
        if (pRight->m_pChild[0] != nullptr)
        {
            while (pHeir->m_pChild[0] != nullptr)
                pHeir = pHeir->m_pChild[0];
            pFix = pHeir->m_pParent;
            nSide = 0;
            pFix->m_pChild[0] = pHeir->m_pChild[1];
            SetParent(pHeir->m_pChild[1], pFix);
            pHeir->m_pChild[1] = pRight;
            pRight->m_pParent = pHeir;
        }
        pHeir->m_pChild[0] = pLeft;
        SetParent(pLeft, pHeir);
        std::swap(pHeir->m_nColor, nColor);
    }
    SetParent(pHeir, pParent);
    ReplaceChild(pParent, pNode, pHeir);
    if (nColor == kBlack)
        RestoreBlackHeight(pFix, nSide, pHeader);
}

bool ValidateNodes(const Links* pHeader, int32 nSize)
{
    const Links* pNode = pHeader->m_pChild[0];
    if (pHeader->m_nColor != kBlack || pHeader->m_pParent != nullptr || pHeader->m_pChild[1] != pNode)
        return false;
    if (pNode == nullptr)
        return nSize == 0;
    if (pNode->m_pParent != pHeader || pNode->m_nColor != kBlack)
        return false;

    // Visits each node before its children. A link is followed only after the node at its end is known to point back,
    // so the walk cannot run in a circle.
    uint32 nBlackHeight = 0;
    for (int32 nNodes = 1;; ++nNodes)
    {
        const Links* pLeft = pNode->m_pChild[0];
        const Links* pRight = pNode->m_pChild[1];
        if (pNode->m_nColor > kRed || (pLeft == pRight && pLeft != nullptr))
            return false;
        for (const Links* pChild : pNode->m_pChild)
        {
            if (pChild != nullptr && (pChild->m_pParent != pNode || (IsRed(pNode) && IsRed(pChild))))
                return false;
        }
        if (pLeft == nullptr || pRight == nullptr)
        {
            uint32 nBlacks = 0;
            for (const Links* pAbove = pNode; pAbove != pHeader; pAbove = pAbove->m_pParent)
                nBlacks += pAbove->m_nColor == kBlack;
            if (nBlackHeight != 0 && nBlacks != nBlackHeight)
                return false;
            nBlackHeight = nBlacks;
        }

        const Links* pNext = pLeft != nullptr ? pLeft : pRight;
        while (pNext == nullptr)
        {
            const Links* pParent = pNode->m_pParent;
            if (pParent == pHeader)
                return nNodes == nSize;
            if (pParent->m_pChild[0] == pNode)
                pNext = pParent->m_pChild[1];
            pNode = pParent;
        }
        pNode = pNext;
    }
}
} // namespace kx::detail
