// The reader's feature description file, written from its node map, and the access modes it states.
#pragma once

#include <string>

#include "QuorinCtrl.h"
#include "model/feature_nodes.h"

namespace qsim {

// A GenICam-style RegisterDescription: a Root category naming every node, then one element per
// node (Integer, Float, Enumeration with its EnumEntry children, Boolean, StringReg, Command) with
// its AccessMode and, where they apply, Value (only when readable), Min, Max, Inc and Length.
std::string GenICamXml(const NodeMap::Table& table, const QUORIN_DEVICE_INFO& info);

// QUORIN_AM_RW, QUORIN_AM_RO, QUORIN_AM_WO or QUORIN_AM_NA.
unsigned int AccessModeOf(Access access);

}  // namespace qsim
