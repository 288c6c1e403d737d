// End-to-end checks of the install and uninstall round trip.
#include "tests/e2e/check_lib.h"

#include <gtest/gtest.h>
