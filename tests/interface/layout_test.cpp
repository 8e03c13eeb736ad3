// The binary interface that a compiled host application relies on: where the members of the public classes
// lie, and which slot of the virtual table each virtual function has. Compiled without access control, to see
// all members.
#include <mvx2/MVX2Exception.h>
#include <mvx2/MVX2Interfaces.h>
#include <mvx2/NullStream.h>
#include <mvx2/SAMChannel.h>
#include <mvx2/SAMInterfaces.h>
#include <mvx2/USBChannel.h>
#include <mvx2/des.h>

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <ostream>
#include <string>

namespace {

using velmorin::MVX2Interfaces;

// A figure that differs between machines with pointers of 64 and of 32 bits.
constexpr std::size_t wide(std::size_t on64, std::size_t on32) { return sizeof(void*) == 8 ? on64 : on32; }

// A pointer to a data member is its offset in every C++ ABI that the library is built for.
template <typename Class, typename Member>
std::size_t offset(Member Class::*member) {
  std::ptrdiff_t value = 0;
  static_assert(sizeof member == sizeof value);
  std::memcpy(&value, &member, sizeof value);
  return static_cast<std::size_t>(value);
}

// A pointer to a virtual function holds its offset in the virtual table. What says that it is virtual is the
// lowest bit: of the offset itself, or on ARM, whose functions may have odd addresses, of the adjustment
// behind it.
template <typename Function>
std::size_t slot(Function function) {
  struct {
    std::uintptr_t pointer;
    std::uintptr_t adjustment;
  } parts{};
  static_assert(sizeof function == sizeof parts);
  std::memcpy(&parts, &function, sizeof parts);
#if defined(__arm__) || defined(__aarch64__)
  const bool isVirtual = (parts.adjustment & 1U) != 0;
#else
  const bool isVirtual = (parts.pointer-- & 1U) != 0;
#endif
  if (!isVirtual) ADD_FAILURE() << "this function is not virtual";
  return parts.pointer / sizeof(void*);
}

// What the library's own table of a class holds. In front of the slots are an offset and the type
// information.
const void* entry(const char* table, std::size_t slot) {
  const auto* const entries = static_cast<const void* const*>(dlsym(RTLD_DEFAULT, table));
  if (entries != nullptr) return entries[2 + slot];
  ADD_FAILURE() << "the library has no " << table;
  return nullptr;
}

const void* function(const char* name) { return dlsym(RTLD_DEFAULT, name); }

struct Destructors {
  const char* table;
  std::size_t slot;
  const char* complete;
  const char* deleting;
};

TEST(VirtualSlots, OfTheChannelAreInTheirOrder) {
  EXPECT_EQ(slot(&Channel::formatMessage), 0U);
  EXPECT_EQ(slot(&Channel::formatResponse), 1U);
  EXPECT_EQ(slot(&Channel::mvx2NoFormattedTransaction), 4U);
  EXPECT_EQ(slot(&Channel::mvx2APDUTransaction), 5U);
}

TEST(VirtualSlots, OfTheSamChannelGoOnBehindThoseOfTheChannel) {
  EXPECT_EQ(slot(&SAMChannel::APDUTransaction), 6U);
}

TEST(VirtualSlots, OfTheExceptionAreInTheirOrder) { EXPECT_EQ(slot(&MVX2Exception::what), 2U); }

TEST(VirtualSlots, HoldTheDestructorsAtTheirPlaces) {
  for (const Destructors& expected :
       {Destructors{"_ZTV10USBChannel", 2, "_ZN10USBChannelD1Ev", "_ZN10USBChannelD0Ev"},
        Destructors{"_ZTV10SAMChannel", 2, "_ZN10SAMChannelD1Ev", "_ZN10SAMChannelD0Ev"},
        Destructors{"_ZTV13MVX2Exception", 0, "_ZN13MVX2ExceptionD1Ev", "_ZN13MVX2ExceptionD0Ev"}}) {
    EXPECT_EQ(entry(expected.table, expected.slot), function(expected.complete)) << expected.complete;
    EXPECT_EQ(entry(expected.table, expected.slot + 1), function(expected.deleting)) << expected.deleting;
  }
}

TEST(VirtualSlots, OfTheDerivedChannelsHoldTheirOwnExchanges) {
  const char* const text =
      "26mvx2NoFormattedTransactionERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE";
  for (const char* cls : {"10USBChannel", "10SAMChannel"}) {
    const std::string name = std::string("_ZN") + cls;
    const std::string table = std::string("_ZTV") + cls;
    EXPECT_EQ(entry(table.c_str(), 4), function((name + text).c_str())) << cls;
    EXPECT_EQ(entry(table.c_str(), 5), function((name + "19mvx2APDUTransactionB5cxx11EPKci").c_str())) << cls;
  }
}

TEST(Layout, OfTheChannelHoldsItsNameBehindTheTable) {
  EXPECT_EQ(sizeof(Channel), wide(40, 28));
  EXPECT_EQ(offset(&Channel::m_name), wide(8, 4));
}

TEST(Layout, OfTheUsbChannelIsFixed) {
  EXPECT_EQ(sizeof(USBChannel), wide(64, 40));
  EXPECT_EQ(offset(&USBChannel::m_context), wide(40, 28));
  EXPECT_EQ(offset(&USBChannel::m_card), wide(48, 32));
  EXPECT_EQ(offset(&USBChannel::m_sendPci), wide(56, 36));
}

TEST(Layout, OfTheSamChannelIsFixed) {
  EXPECT_EQ(sizeof(SAMChannel), wide(80, 48));
  EXPECT_EQ(offset(&SAMChannel::m_context), wide(40, 28));
  EXPECT_EQ(offset(&SAMChannel::m_readersLength), wide(48, 32));
  EXPECT_EQ(offset(&SAMChannel::m_card), wide(56, 36));
  EXPECT_EQ(offset(&SAMChannel::m_ioRequest), wide(64, 40));
  EXPECT_EQ(offset(&SAMChannel::m_connected), wide(72, 44));
}

TEST(Layout, OfTheDeviceFacadeIsFixed) {
  EXPECT_EQ(offset(&MVX2Interfaces::m_channel), 0U);
  EXPECT_EQ(offset(&MVX2Interfaces::m_mode), wide(8, 4));
  EXPECT_EQ(offset(&MVX2Interfaces::m_externalException), wide(12, 8));
  EXPECT_EQ(offset(&MVX2Interfaces::m_readerSelect), wide(16, 12));
  EXPECT_EQ(offset(&MVX2Interfaces::m_log), wide(24, 16));
  EXPECT_EQ(sizeof(MVX2Interfaces), wide(24, 16) + sizeof(std::ostream));
}

TEST(Layout, OfTheSamFacadeIsFixed) {
  EXPECT_EQ(sizeof(SAMInterfaces), wide(32, 16));
  EXPECT_EQ(offset(&SAMInterfaces::m_channel), 0U);
  EXPECT_EQ(offset(&SAMInterfaces::m_externalException), wide(8, 4));
  EXPECT_EQ(offset(&SAMInterfaces::m_log), wide(16, 8));
  EXPECT_EQ(offset(&SAMInterfaces::m_unlocked), wide(24, 12));
}

TEST(Layout, OfTheExceptionHoldsItsTextBehindTheTable) {
  EXPECT_EQ(sizeof(MVX2Exception), wide(40, 28));
  EXPECT_EQ(offset(&MVX2Exception::m_text), wide(8, 4));
}

TEST(Layout, OfTheLogBufferAddsNothingToAFileBuffer) { EXPECT_EQ(sizeof(NullStream), sizeof(std::filebuf)); }

TEST(Layout, OfTheKeySchedulesIsThatOfPlainWords) {
  EXPECT_EQ(sizeof(des_context), 132U);
  EXPECT_EQ(offsetof(des_context, mode), 0U);
  EXPECT_EQ(offsetof(des_context, sk), 4U);
  EXPECT_EQ(sizeof(des3_context), 388U);
  EXPECT_EQ(offsetof(des3_context, mode), 0U);
  EXPECT_EQ(offsetof(des3_context, sk), 4U);
}

TEST(Layout, OfTheConnectModeIsASignedInteger) {
  EXPECT_EQ(sizeof(velmorin::ConnectMode_t), sizeof(int));
  EXPECT_EQ(static_cast<int>(velmorin::CONNECT_DEFAULT), -1);
  EXPECT_EQ(static_cast<int>(velmorin::CONNECT_USB), 2);
}

}  // namespace
