// Calling any exported conversion by name through the generated call table:
// the tool hands over its buffers as planes (pointer and step) in argument
// order, inputs and outputs separately, and named parameter values.
#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "calltable.h"

namespace orvcli {

// What went wrong and which exit code says so.
enum Exit { kExitOk = 0, kExitFailed = 1, kExitUsage = 2, kExitInput = 3, kExitOutput = 4 };

struct Failure : std::runtime_error {
    Failure(int code, const std::string& msg) : std::runtime_error(msg), code(code) {}
    int code;
};

struct Plane {
    void* data;
    int step;
};

struct Call {
    std::vector<Plane> in;    // the arrays the function reads, in argument order
    std::vector<Plane> out;   // the arrays it writes
    RoiSize roi{};
    OrvRect rect{};
    std::map<std::string, double> values;               // scalars by parameter name
    std::map<std::string, std::vector<double>> arrays;  // fixed arrays by parameter name
};

// The table entry of an exported name, or null when this build lacks it.
const orvcall::Entry* find(const std::string& name);

// The first of `names` that this build exports, or "".
std::string firstExported(const std::vector<std::string>& names);

// Calls `name`; returns its status, and the value of an int* result in *out.
OrvStatus call(const std::string& name, const Call& c, int* out = nullptr);

// Calls and turns a failing status into a Failure naming the function.
OrvStatus callChecked(const std::string& name, const Call& c, int* out = nullptr);

const char* statusName(OrvStatus st);

}  // namespace orvcli
