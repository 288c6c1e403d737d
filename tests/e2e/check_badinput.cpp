// End-to-end checks of bad media and inputs beyond the list and the packed files.
#include "tests/e2e/check_lib.h"

#include <gtest/gtest.h>
