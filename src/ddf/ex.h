// EX: values computed from other p-fields of the same event by an equation
// evaluated strictly from left to right.
#pragma once

#include "ddf/record.h"
#include "pfield/state.h"

namespace sorvel {

// Operand kinds and operators of an equation record.
enum ExOperand { EX_CONSTANT = 0, EX_PFIELD = 1 };
enum ExOperator { EX_ADD = 0, EX_SUB = 1, EX_MUL = 2, EX_DIV = 3, EX_MOD = 4 };

constexpr int kMaxExOperations = 41;

// Evaluates alternative k's equation for the event after the cursor.
int make_EX(const Ctx& c, const DataList& d, const DdfArgs& a, int k, float& result);

}  // namespace sorvel
