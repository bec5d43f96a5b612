// The argument checks that most front functions share, in their fixed order.
#pragma once

#include "orvcc.h"

namespace h9 {

// Source then destination pointer, then width, then height.
inline OrvStatus checkRect(const void* src, const void* dst, RoiSize roi, int minWidth = 1, int minHeight = 1)
{
    if (!src)
        return orvStatusNullPointer;
    if (!dst)
        return orvStatusNullPointer;
    if (roi.width < minWidth)
        return orvStatusBadSize;
    if (roi.height < minHeight)
        return orvStatusBadSize;
    return orvStatusOk;
}

// Every element of a plane array, in order.
template <class P, int N>
inline OrvStatus checkPlanes(P* const (&planes)[N])
{
    for (int i = 0; i < N; ++i)
        if (!planes[i])
            return orvStatusNullPointer;
    return orvStatusOk;
}

template <class P>
inline OrvStatus checkPlanes(P* const* planes, int n)
{
    for (int i = 0; i < n; ++i)
        if (!planes[i])
            return orvStatusNullPointer;
    return orvStatusOk;
}

}  // namespace h9
