#include "store/base64_text.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

TEST(Base64Text, GoesBothWaysWithPadding) {
  const std::pair<std::string_view, std::string_view> cases[] = {{"", ""},
                                                                 {"f", "Zg=="},
                                                                 {"fo", "Zm8="},
                                                                 {"foo", "Zm9v"},
                                                                 {"foob", "Zm9vYg=="},
                                                                 {"fooba", "Zm9vYmE="},
                                                                 {"\xFB\xFF", "+/8="}};
  for (const auto& [bytes, text] : cases) {
    EXPECT_EQ(Base64Encode(bytes), text);
    EXPECT_EQ(Base64Decode(text), bytes);
  }
  std::string all;
  for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
  EXPECT_EQ(Base64Decode(Base64Encode(all)), all);
}

TEST(Base64Text, SkipsWhatIsNotOfTheAlphabet) {
  EXPECT_EQ(Base64Decode(" Zm9\r\nvYg\t="), "foob") << "line breaks, missing padding";
  EXPECT_EQ(Base64Decode("Z*m-9_v"), "foo");
  EXPECT_EQ(Base64Decode("Zm9v=Zm9v"), "foofoo") << "padding in the middle is a stranger too";
  EXPECT_EQ(Base64Decode("\xFF\x80!?"), "");
  EXPECT_EQ(Base64Decode("Z"), "") << "six bits make no byte";
}

}  // namespace
}  // namespace corvane
