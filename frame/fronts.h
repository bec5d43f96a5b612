// Declarations of the hidden front functions h9_<name>, one for every
// exported name, each with exactly the type of the public prototype: a front
// function whose parameters drift from orvcc.h fails to compile.
#pragma once

#include "orvcc.h"

#define ORV_EXPORT(n) extern "C" decltype(n) h9_##n;
#include "frame/exports.inc"
#undef ORV_EXPORT

// Defines the front function of an exported name: ORV_FRONT(orviX)(args) {...}
#define ORV_FRONT(n) extern "C" OrvStatus h9_##n
