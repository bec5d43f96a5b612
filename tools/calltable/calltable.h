// The call table: one entry per exported conversion, generated from the
// header and the export list (gen_calltable.py), read by the marshallers of
// the Python module and the command-line tool.
#pragma once

#include "orvcc.h"

namespace orvcall {

// One C argument, filled by the marshaller from a Python argument.
struct Slot {
    void* p = nullptr;
    int i = 0;
    float f = 0.0f;
    RoiSize roi{};
    OrvRect rect{};
    void* planes[4] = {};
    int steps[4] = {};
};

// One Python-side argument.
//   kind    img: array (pointer and its row step), planes: tuple of arrays
//           (pointers and one step each), planes1: tuple of arrays sharing
//           one step, ptr: array (pointer only), tuple: arrays (pointers
//           only), roi: (width, height), rect: (x, y, width, height),
//           scalar, vec: fixed array of values (None for a null pointer),
//           outint: an int the call returns
//   elem    element type: u8 u16 s16 u32 s32 f32 f64 i32
//   count   planes in a tuple, values in a vec
//   input   the data is only read
//   name    the C parameter's name
//   slot    the C parameter the argument fills; step the one of its step
struct Arg {
    const char* kind;
    const char* elem;
    int count;
    bool input;
    const char* name;
    int slot;
    int step;
};

struct Entry {
    const char* name;
    OrvStatus (*thunk)(Slot*);
    int slots;
    int nargs;
    Arg args[12];
};

extern const Entry kEntries[];
extern const int kEntryCount;

}  // namespace orvcall
