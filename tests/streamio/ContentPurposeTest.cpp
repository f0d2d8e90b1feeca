#include <StreamIO/ContentPurpose.h>

#include <gtest/gtest.h>
