// One row of copies of a pixel through an interleaved conversion, in plain
// memory: for known answers and for where a row splits between forms.
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "orvcc.h"

namespace orvtest {

template <class T>
using RowFn = OrvStatus (*)(const T*, int, T*, int, RoiSize);

// `width` copies of `px` (ch elements each), converted; the destination
// starts at zero.
template <class T>
std::vector<T> row(int width, int ch, std::vector<T> px, RowFn<T> f)
{
    std::vector<T> src, dst(std::size_t(width) * ch, T(0));
    for (int i = 0; i < width; ++i)
        src.insert(src.end(), px.begin(), px.end());
    EXPECT_EQ(f(src.data(), width * ch * int(sizeof(T)), dst.data(), width * ch * int(sizeof(T)), {width, 1}),
              orvStatusOk);
    return dst;
}

}  // namespace orvtest
