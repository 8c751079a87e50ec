#pragma once

#include <vector>

#include "apps/ymrvast/Inspection.h"

// Says of each ad what the other profile makes of it, by what that made of the same documents.
void compare(std::vector<Inspection::Ad>& ads, YMRTagProfile otherProfile,
             const std::vector<const Inspection::Ad*>& others);
