// End-to-end checks after faults of the target and the source during an install.
#include "tests/e2e/check_lib.h"

#include <gtest/gtest.h>
