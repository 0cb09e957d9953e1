#include <gtest/gtest.h>

#include <string>

#include "Tests/Support/SeededRandom.h"
#include "TidewellCore/ChatData/NameResolver.h"

namespace Fixture {
namespace {

TEST(DisplayName, RealNamesAreKept) {
  for (const char* name : {"Ana",
                           "Al",
                           "李",
                           "María José Carreño Quiñones",
                           "Maria das Graças de Oliveira Albuquerque Cavalcanti",
                           "MariaFernandaSilvaOliveira",
                           "mariafernandasilvaoliveira",
                           "MARIAFERNANDASILVAOLIVEIRA",
                           "JoaoPedroDeSouzaELima",
                           "Hans-Joachim Müller-Lüdenscheidt",
                           "Donaudampfschifffahrtsgesellschaft",
                           "Rechtsanwaltskanzlei-Schmidt-Meier",
                           "maria-eduarda-de-souza-e-lima",
                           "ana_clara_de_souza_e_silva",
                           "田中太郎さんとその家族一同",
                           "김수한무거북이와두루미삼천갑자동방삭",
                           "王小明的超级无敌长的名字测试一下吧",
                           "Владислав Константинопольский",
                           "Pedro 2",
                           "Ana 1990",
                           "João (Trabalho) 11 90000-1111",
                           "Maximiliano2000Fernandes",
                           "+55 11 90000-1111",
                           "Tio Zé 🍻",
                           "❤️❤️❤️❤️❤️❤️❤️❤️❤️❤️",
                           "A.B.C. Contabilidade Ltda.",
                           "O'Connor",
                           "Oficina24Horas",
                           "Facade Deadbeef Cafe Bad",
                           "Condomínio Bloco B2 Apto 1204",
                           "mariafernanda1990",
                           "DJ_Marcelo_Oficial_2024"}) {
    EXPECT_TRUE(NameResolver::isPlausibleDisplayName(name)) << name;
  }
}

TEST(DisplayName, BlankNamesAreNone) {
  for (const char* name : {"", " ", "\n\t ", "\u00A0"}) {
    EXPECT_FALSE(NameResolver::isPlausibleDisplayName(name)) << testing::PrintToString(name);
  }
}

TEST(DisplayName, MachineIdentifiersAreRejected) {
  for (const char* text :
       {"CgtKb2huIFNtaXRoEgA=", "ChQKBEpvaG4SBVNtaXRoGgUIARABIAE=", " CgtKb2huIFNtaXRoEgA= ",
        "CAESEAAAAAAAAAAAAAAAAAAAAAA=", "EhgKDAiA8q6yBhCAmJ2oAhIICAEQARgBIAE", "3EB0C431C26A1916E07A",
        "ab0c1d2e-0000-4000-8000-000000000001", "AB0C1D2E-0000-4000-8000-000000000001",
        "d41d8cd98f00b204e9800998ecf8427e", "a9993e364706816aba3e25717850c26c9cd0d89d", "1234567890123456",
        "00008110-000A1B2C3D4E5F60", "eyJhbGciOiJIUzI1NiIsInR5cCI6IkpXVCJ9", "kX3vQ9_2mZ-7pLr8TfWb1Y"}) {
    EXPECT_FALSE(NameResolver::isPlausibleDisplayName(text)) << text;
    EXPECT_TRUE(NameResolver::looksLikeOpaqueBlob(text)) << text;
  }
}

TEST(DisplayName, ShortProtobufsWithATimeAreRejected) {
  for (const char* text : {"COah/ZEGIAA=", "CPShu54GIAA=", "CIDaqqcGIAA", "CIDaqqcG", " COah/ZEGIAA=\n"}) {
    EXPECT_FALSE(NameResolver::isPlausibleDisplayName(text)) << text;
    EXPECT_TRUE(NameResolver::looksLikeOpaqueBlob(text)) << text;
  }
}

TEST(DisplayName, NamesOfTheLettersThatBase64HasAreKept) {
  for (const char* name :
       {"CORA",         "CLARISSA",     "Carlotta",     "Cidinhas",     "CIDINHAS",      "CAROLINA",    "CoraLinda",
        "Clarisse",     "CECILIA1",     "Claudia2",     "CoraLina",     "CLAUDIAS",      "Clementina",  "Clementinas",
        "CLEMENTINAIS", "Christopher1", "CHRISTOPHERS", "MariaClara",   "MariaLuisa",    "ANACAROLINA", "AnaCarolina1",
        "CaioMarcelo",  "CeciliaMaria", "CeliaRegina2", "JoaoPedro",    "JoaoPedroLima", "12345678",    "55119000",
        "Ana+Pedro",    "Ana/Pedro",    "Cora/Leo",     "CORA+LEO/BIA", "C/Leo+Bia/Zeca"}) {
    EXPECT_TRUE(NameResolver::isPlausibleDisplayName(name)) << name;
  }
}

TEST(DisplayName, OtherShortRunsAreNeverBlobs) {
  for (const char* text : {"0123456789abcde", "a1B2c3D4e5F6g7H", "CgtKb2huIA=="}) {
    EXPECT_FALSE(NameResolver::looksLikeOpaqueBlob(text)) << text;
  }
}

// A protobuf message as the app stores it: small numbers, a time, a name or some random bytes.
std::string protobuf(SeededRandom& random) {
  std::string message;
  for (std::size_t field = 1; field <= 2 + random.below(3); ++field) {
    if (random.chance(50)) {
      message += static_cast<char>(field << 3);
      for (std::size_t i = random.below(4); i-- > 0;) message += static_cast<char>(0x80 | random.below(128));
      message += static_cast<char>(random.below(128));
    } else {
      const std::size_t length = 4 + random.below(12);
      message += static_cast<char>(field << 3 | 2);
      message += static_cast<char>(length);
      for (std::size_t i = 0; i < length; ++i) message += static_cast<char>(random.below(256));
    }
  }
  return message;
}

// RFC 4648 section 4 for whole groups of three bytes, which leave no tell-tale padding.
std::string base64(const std::string& bytes) {
  constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t i = 0; i + 3 <= bytes.size(); i += 3) {
    unsigned group = 0;
    for (std::size_t byte = i; byte < i + 3; ++byte) group = group << 8 | static_cast<unsigned char>(bytes[byte]);
    for (const int shift : {18, 12, 6, 0}) text += alphabet[group >> shift & 63];
  }
  return text;
}

TEST(DisplayName, HardlyAnyBase64OfAProtobufPassesForAName) {
  SeededRandom random(11);
  int passed = 0;
  int tried = 0;
  while (tried < 4000) {
    const std::string message = protobuf(random);
    if (message.size() < 12 || message.size() % 3 != 0) continue;
    ++tried;
    if (NameResolver::isPlausibleDisplayName(base64(message))) ++passed;
  }
  EXPECT_LT(passed, tried / 25);
}

}  // namespace
}  // namespace Fixture
