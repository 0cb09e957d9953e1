#include "Tests/Support/SampleTexts.h"

#include <array>

namespace Fixture {

namespace {

using enum Language;

constexpr std::string_view phoneServer = "s.whatsapp.net";
constexpr std::string_view lidServer = "lid";

// The digits are of ranges that nobody is given.
constexpr std::array people = {
    SamplePerson{"5511900001111", phoneServer, "Marina Duarte", "Marina Duarte", "Mari", portuguese},
    SamplePerson{"98765432101234", lidServer, "Marina Duarte", "", "Mari", portuguese},
    SamplePerson{"5511900002222", phoneServer, "Ana", "Ana", "Ana Lima", portuguese},
    SamplePerson{"5521900003333", phoneServer, "Ana", "Ana", "Aninha", portuguese},
    SamplePerson{"15550001111", phoneServer, "Michael O'Brien", "Michael O'Brien", "Mike", english},
    SamplePerson{"15550002222", phoneServer, "Grace 🌻", "Grace 🌻", "Grace", english},
    SamplePerson{"447700900123", phoneServer, "Dr. Eleanor Whitfield-Hughes", "Dr. Eleanor Whitfield-Hughes", "Eleanor",
                 english},
    SamplePerson{"551130001111", phoneServer, "\u200E", "Padaria Central", "Padaria", portuguese},
    SamplePerson{"5531900004444", phoneServer, "\u202A\u202C", "", "Beto", portuguese},
    SamplePerson{"5541900005555", phoneServer, "", "", "", portuguese},
    SamplePerson{"351900000111", phoneServer, "João Conceição", "João Conceição", "João", portuguese},
    SamplePerson{"966500000111", phoneServer, "ليلى حداد", "ليلى حداد", "ليلى", arabic},
    SamplePerson{"972500000111", phoneServer, "נועה לוי", "נועה לוי", "נועה", hebrew},
    SamplePerson{"819000000111", phoneServer, "佐藤 健", "佐藤 健", "けん", japanese},
    SamplePerson{"8613000000111", phoneServer, "王芳", "王芳", "小芳", chinese},
    SamplePerson{"4930001111", phoneServer, "Jürgen Groß", "Jürgen Groß", "Jürgen", english},
    SamplePerson{"55119000066", phoneServer, "Tia Célia 👩🏽‍🍳", "Tia Célia 👩🏽‍🍳", "Célia",
                 portuguese},
    SamplePerson{"5511900007777", phoneServer, "Eletricista <24h> & Reparos", "Eletricista <24h> & Reparos", "",
                 portuguese},
    SamplePerson{"45678901234567", lidServer, "Paulo Nunes", "", "Paulo", portuguese},
    SamplePerson{"71234567890123", lidServer, "", "", "Duda", portuguese},
    SamplePerson{"5511900008888", phoneServer, "Condomínio: Bloco B / Apto 12", "Condomínio: Bloco B / Apto 12",
                 "Síndico", portuguese},
    SamplePerson{"15550003333", phoneServer, "sam", "Sam Okafor", "sam", english},
    SamplePerson{"15550004444", phoneServer, "SAM", "", "S.", english},
    SamplePerson{"5511900009999", phoneServer, "Vovó", "Vovó", "Lourdes", portuguese},
    SamplePerson{"5571900001010", phoneServer, "Rafael", "Rafael Sant’Anna", "Rafa", portuguese},
    SamplePerson{"5581900002020", phoneServer, "Luísa…", "Luísa…", "Lu", portuguese},
};

constexpr std::array groups = {
    SampleGroup{"120363000000000001", "Família ❤️", portuguese},
    SampleGroup{"120363000000000002", "Trabalho", portuguese},
    SampleGroup{"120363000000000003", "Trabalho", portuguese},
    SampleGroup{"5511900002222-1400000000", "Futebol de quinta ⚽", portuguese},
    SampleGroup{"120363000000000004", "Book Club", english},
    SampleGroup{"120363000000000005", "avatars", english},
    SampleGroup{"120363000000000006", "رحلة الصيف", arabic},
    SampleGroup{"120363000000000007", "משפחה 👨‍👩‍👧‍👦", hebrew},
    SampleGroup{"120363000000000008", "同窓会 2023", japanese},
    SampleGroup{"5521900003333-1500000000",
                "Viagem 2022/2023: Lisboa, Porto e todas as cidades que couberem no "
                "carro alugado da Ana, mais as que a Marina quiser visitar depois",
                portuguese},
};

constexpr std::array portugueseTexts = {
    "Bom dia!",
    "Tudo bem por aí?",
    "Cheguei agora",
    "Já estou saindo de casa",
    "Pode ser às 19h?",
    "kkkkkkk",
    "Amanhã eu te ligo",
    "Vi o vídeo, que engraçado",
    "Comprei o pão e o café",
    "Não esquece o aniversário da Célia",
    "Qual é o endereço mesmo?",
    "Obrigada pela ajuda ontem",
    "Fechado",
    "O jogo foi adiado por causa da chuva",
    "Me manda a foto depois",
    "Segue o contrato assinado",
    "Saudade de vocês",
    "Acho que deixei a chave aí",
    "A reunião mudou para sexta",
    "Quanto ficou a conta? Passo o pix agora",
    "*Importante*: portão novo a partir de segunda",
};

constexpr std::array englishTexts = {
    "Morning!",
    "Are you around later?",
    "On my way",
    "Running ten minutes late, sorry",
    "That was hilarious",
    "Can you send me the address?",
    "Sounds good",
    "Happy birthday!!",
    "I loved the last chapter",
    "Did you see the email?",
    "Let's do Thursday instead",
    "Thanks for dinner",
    "The train is stuck again",
    "Sure, no problem",
    "https://example.com/recipes/lemon-cake?ref=share",
    "1 < 2 && \"quotes\" stay as they are",
    "Shopping list:\n- milk\n- eggs\n- a bag of rice",
    "I'll call you when I land",
    "Great photo",
    "Ok",
};

constexpr std::array arabicTexts = {
    "صباح الخير", "كيف حالك؟", "أنا في الطريق", "شكراً جزيلاً", "نلتقي غداً إن شاء الله", "الصورة جميلة جداً", "تمام 123"};
constexpr std::array hebrewTexts = {"בוקר טוב", "מה שלומך?",      "אני בדרך",  "תודה רבה",
                                    "נדבר מחר", "איזו תמונה יפה", "סגור 19:30"};
constexpr std::array japaneseTexts = {"おはよう",     "今どこ？", "もうすぐ着きます", "ありがとう！",
                                      "写真送ってね", "了解です", "また明日"};
constexpr std::array chineseTexts = {"早上好", "你在哪儿？", "马上到", "谢谢！", "照片很漂亮", "好的", "明天见"};
constexpr std::array emoji = {"😂", "❤️", "👍", "🙏", "🎉", "😅", "👩‍👩‍👧", "🇧🇷", "👍🏽", "☕"};

std::string phrase(Language language, SeededRandom& random) {
  switch (language) {
    case portuguese:
      return random.pick(portugueseTexts);
    case english:
      return random.pick(englishTexts);
    case arabic:
      return random.pick(arabicTexts);
    case hebrew:
      return random.pick(hebrewTexts);
    case japanese:
      return random.pick(japaneseTexts);
    case chinese:
      return random.pick(chineseTexts);
  }
  return {};
}

}  // namespace

std::span<const SamplePerson> samplePeople() { return people; }

std::span<const SampleGroup> sampleGroups() { return groups; }

std::string sampleText(Language language, SeededRandom& random) {
  std::string text = phrase(language, random);
  while (random.chance(15)) {
    text += random.chance(50) ? " " : "\n";
    text += phrase(language, random);
  }
  if (random.chance(20)) text += std::string(" ") + random.pick(emoji);
  return text;
}

}  // namespace Fixture
