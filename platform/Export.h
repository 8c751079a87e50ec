#pragma once

// Marks what a shared library of the project exports; everything else is hidden.
#define YMR_API __attribute__((visibility("default")))
