#include "Faults.h"

#include <gtest/gtest.h>

#include <string>

using mvx2sim::Bytes;
using mvx2sim::Exchange;
using mvx2sim::Faults;
using mvx2sim::Occasion;
using mvx2sim::splitWords;

namespace {

Exchange exchange(Faults& faults, Occasion occasion = Occasion::any) {
  Exchange exchange{false, 0, {0x01, 0x02, 0x03, 0x04, 0x90, 0x00}};
  faults.apply(occasion, exchange);
  return exchange;
}

const Bytes untouched = {0x01, 0x02, 0x03, 0x04, 0x90, 0x00};

Faults with(const std::string& line) {
  Faults faults;
  EXPECT_TRUE(faults.set(splitWords(line))) << line;
  return faults;
}

}  // namespace

TEST(Fault, OfATransmitFailsItsExchange) {
  Faults faults = with("transmit");
  EXPECT_TRUE(exchange(faults).failed);
  EXPECT_FALSE(exchange(faults).failed);
}

TEST(Fault, GoesAwayAfterItsCount) {
  Faults faults = with("transmit 2");
  EXPECT_TRUE(exchange(faults).failed);
  EXPECT_TRUE(exchange(faults).failed);
  EXPECT_FALSE(exchange(faults).failed);
}

TEST(Fault, LetsExchangesPassFirst) {
  Faults faults = with("transmit 1 after 2");
  EXPECT_FALSE(exchange(faults).failed);
  EXPECT_FALSE(exchange(faults).failed);
  EXPECT_TRUE(exchange(faults).failed);
  EXPECT_FALSE(exchange(faults).failed);
}

TEST(Fault, MayLeaveItsCountOutBeforeAfter) {
  Faults faults = with("transmit after 1");
  EXPECT_FALSE(exchange(faults).failed);
  EXPECT_TRUE(exchange(faults).failed);
}

TEST(Fault, IsCleared) {
  Faults faults = with("transmit 5");
  EXPECT_TRUE(faults.set({"clear"}));
  EXPECT_FALSE(exchange(faults).failed);
}

TEST(Fault, OfTheFirstByteReplacesIt) {
  Faults faults = with("first 9f");
  EXPECT_EQ(exchange(faults).reply, (Bytes{0x9F, 0x02, 0x03, 0x04, 0x90, 0x00}));
}

TEST(Fault, OfAByteReplacesIt) {
  Faults faults = with("byte 3 AB");
  EXPECT_EQ(exchange(faults).reply, (Bytes{0x01, 0x02, 0x03, 0xAB, 0x90, 0x00}));
}

TEST(Fault, OfAByteThatTheReplyDoesNotHaveChangesNothing) {
  Faults faults = with("byte 6 AB");
  EXPECT_EQ(exchange(faults).reply, untouched);
}

TEST(Fault, OfTheStatusWordReplacesTheLastTwoBytes) {
  Faults faults = with("sw 6A82");
  EXPECT_EQ(exchange(faults).reply, (Bytes{0x01, 0x02, 0x03, 0x04, 0x6A, 0x82}));
}

TEST(Fault, OfTheDataCutsOrFillsBeforeTheStatusWord) {
  Faults cut = with("data 1");
  EXPECT_EQ(exchange(cut).reply, (Bytes{0x01, 0x90, 0x00}));
  Faults fill = with("data 5");
  EXPECT_EQ(exchange(fill).reply, (Bytes{0x01, 0x02, 0x03, 0x04, 0x00, 0x90, 0x00}));
}

TEST(Fault, OfTheLengthCutsOrFillsTheReply) {
  Faults cut = with("truncate 1");
  EXPECT_EQ(exchange(cut).reply, (Bytes{0x01}));
  Faults fill = with("extend 8");
  EXPECT_EQ(exchange(fill).reply, (Bytes{0x01, 0x02, 0x03, 0x04, 0x90, 0x00, 0x00, 0x00}));
}

TEST(Fault, OfTheLengthNeverDoesTheOpposite) {
  Faults truncate = with("truncate 100");
  EXPECT_EQ(exchange(truncate).reply, untouched);
  Faults extend = with("extend 2");
  EXPECT_EQ(exchange(extend).reply, untouched);
}

TEST(Fault, OfDelayIsHandedOnToTheDriver) {
  Faults faults = with("delay 250");
  EXPECT_EQ(exchange(faults).delayMilliseconds, 250U);
  EXPECT_EQ(exchange(faults).delayMilliseconds, 0U);
}

TEST(Fault, OfTheVersionWaitsForAVersionRecord) {
  Faults faults = with("version");
  EXPECT_EQ(exchange(faults).reply, untouched);
  EXPECT_EQ(exchange(faults, Occasion::version).reply[3], 0x00);
  EXPECT_EQ(exchange(faults, Occasion::version).reply, untouched);
}

TEST(Fault, OfTheProofWaitsForAProof) {
  Faults faults = with("mac");
  EXPECT_EQ(exchange(faults, Occasion::version).reply, untouched);
  EXPECT_EQ(exchange(faults, Occasion::unlockProof).reply[0], 0xFE);
}

TEST(Fault, StandsBesideOthers) {
  Faults faults = with("first 00 2");
  ASSERT_TRUE(faults.set(splitWords("byte 1 00 1")));
  EXPECT_EQ(exchange(faults).reply, (Bytes{0x00, 0x00, 0x03, 0x04, 0x90, 0x00}));
  EXPECT_EQ(exchange(faults).reply, (Bytes{0x00, 0x02, 0x03, 0x04, 0x90, 0x00}));
}

TEST(Fault, IsRefusedWhenItIsNotUnderstood) {
  for (const char* line :
       {"", "nothing", "first", "first 100", "first xx", "byte 1", "sw 10000", "transmit 0", "transmit x",
        "transmit -1", "transmit 1 2", "transmit 1 after", "transmit after x", "transmit 1 after 2 3",
        "delay", "delay 600001", "clear all", "extend 1025"}) {
    Faults faults;
    EXPECT_FALSE(faults.set(splitWords(line))) << line;
    EXPECT_EQ(exchange(faults).reply, untouched) << line;
    EXPECT_FALSE(exchange(faults).failed) << line;
  }
}
