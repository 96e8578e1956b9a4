#include <gtest/gtest.h>

#include <clocale>

/// Every test program runs under the locale of its environment, so that ctest can run the same
/// tests under several.
int main(int argc, char** argv) {
  std::setlocale(LC_ALL, "");
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
