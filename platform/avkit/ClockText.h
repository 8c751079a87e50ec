#pragma once

#include <string>

// `seconds` as h:mm:ss, fractions cut off. Negative counts as zero; empty for NaN and the infinities.
std::string clockText(double seconds);
