#include "platform/readable_memory.h"

#include <gtest/gtest.h>

#include <vector>
#if defined(_WIN32)
#include <windows.h>
#endif

namespace {

TEST(ReadableMemory, AllocatedMemoryIsReadable) {
  const std::vector<double> block(1000);
  EXPECT_TRUE(platform::isReadable(block.data(), block.size() * sizeof(double)));
}

TEST(ReadableMemory, NullIsNotReadable) { EXPECT_FALSE(platform::isReadable(nullptr, 8)); }

#if defined(_WIN32)
TEST(ReadableMemory, APageWithoutAccessAmongOthersIsNotReadable) {
  SYSTEM_INFO system;
  GetSystemInfo(&system);
  const std::size_t page = system.dwPageSize;
  auto* const block =
      static_cast<char*>(VirtualAlloc(nullptr, 3 * page, MEM_COMMIT, PAGE_READWRITE));
  ASSERT_NE(block, nullptr);
  DWORD before = 0;
  ASSERT_TRUE(VirtualProtect(block + 2 * page, page, PAGE_NOACCESS, &before));
  EXPECT_TRUE(platform::isReadable(block, 2 * page));
  EXPECT_FALSE(platform::isReadable(block, 2 * page + 1));
  EXPECT_FALSE(platform::isReadable(block + 2 * page, 1));
  VirtualFree(block, 0, MEM_RELEASE);
}
#endif

}  // namespace
