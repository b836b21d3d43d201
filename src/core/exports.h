// How internal functions and tables leave the shared library: by their plain C name.
#pragma once

#define QEL_KERNEL extern "C" __attribute__((visibility("default")))
#define QEL_TABLE extern "C" __attribute__((visibility("default")))
