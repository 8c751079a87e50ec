#pragma once

#include <ostream>

#include "apps/ymrvast/Inspection.h"

// For people: what the player would show, the chain hop by hop, then each ad with what was picked, why the others were
// not, and the URLs that would be asked. What servers sent is printed without its control characters.
void printText(const Inspection& inspection, std::ostream& out);
