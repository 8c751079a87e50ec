#pragma once

#include <ostream>

#include "apps/ymrvast/Inspection.h"

// For scripts: one JSON object, whose members are documented in the man page.
void printJSON(const Inspection& inspection, std::ostream& out);
