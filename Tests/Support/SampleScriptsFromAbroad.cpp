#include "Tests/Support/SampleScripts.h"

#include <array>

namespace Fixture {

namespace {

constexpr std::string_view filmFriends = R"(
# 15550002222@s.whatsapp.net
== 2024-05-24
23:12 Grace 🌻: Ok so I just got out of the cinema
23:12 Grace 🌻: I have THOUGHTS
23:14 Me: No spoilers!! I'm going on Sunday
23:15 Grace 🌻: Fine. One word: lighthouse
    > Me: No spoilers!!
23:15 Me: That is not helpful at all
23:16 Grace 🌻: It will be
== 2024-05-26
22:48 Me: LIGHTHOUSE
    > Grace 🌻: Fine. One word
    + 😱 Grace 🌻
22:48 Me: I take everything back
22:50 Grace 🌻: RIGHT??
22:53 Me: The whole second half I kept thinking, surely someone is going to open that door. And then nobody does, for twenty minutes, and somehow it is the most frightening thing I have seen in years. No music, no jump, just the light going round and the two of them pretending not to listen. I walked home the long way because I didn't want to stop being in it.
22:55 Grace 🌻: See this is why I only go to films with you
    + ❤️ Me
22:56 Grace 🌻: [photo] the queue on Friday, by the way
22:58 Me: Was it the old one by the harbour? They still have the red seats?
22:59 Grace 🌻: Red seats, warm popcorn, one broken speaker. Perfect
    > Me: Was it the old one
23:00 Grace 🌻: [place] Harbour Cinema, 3 Quay Road (51.503399, -0.119519)
23:02 Grace 🌻: There's an interview with the director here: https://example.com/film/interview#lighthouse (the bit about the door is at 12:40)
    ~ “We had one take left” — The director on the door, the light and the silence in between
23:10 Me: Watching it now
23:31 Me: She says they only had ONE take left 😳
23:32 Grace 🌻: [sticker]
== 2024-05-30
19:05 Grace 🌻: Thursday double bill at the Rex. I already have two tickets. You have no choice
19:06 Me: When do I ever
    > Grace 🌻: Thursday double bill
19:06 Me: [voice call] 4:10
19:07 Grace 🌻: 🍿🍿🍿
19:30 Grace 🌻: [live place] (51.507222, -0.127500)
19:58 Me: So that is where the rabbit went
    > Grace 🌻: My rabbit has opinions about my curtains
)";

constexpr std::string_view landlord = R"(
# 4930001111@s.whatsapp.net
== 2024-05-20
08:29 Jürgen Groß: [security code]
08:30 Jürgen Groß: Good morning. The plumber comes on Thursday between 8 and 12 because of the heating. Somebody must be at home please.
08:41 Me: Good morning Mr Groß, Thursday is fine, I work from home that day.
08:42 Jürgen Groß: Very good. His number is +49 30 0001112, name Krüger.
08:43 Jürgen Groß: [contact] Krüger Heizungsbau, +49 30 0001112
== 2024-05-23
11:58 Me: [photo] The plumber was here. He says the valve in the cellar needs replacing too.
12:20 Jürgen Groß: I see. Please send me his report.
12:26 Me: [Bericht Heizung.pdf]
12:40 Jürgen Groß: Thank you. I order the part. Until then please do not turn the red handle. Really not.
12:41 Me: Nobody will touch the red handle :)
    > Jürgen Groß: Thank you. I order
    + 👍 Jürgen Groß
12:50 Jürgen Groß: [voice call]
13:05 Me: [voice call] 1:35
== 2024-05-28
17:03 Jürgen Groß: Dear tenant, the new contract for the parking place. Please sign on page 1 and return until Friday. The rent does not change.
17:03 Jürgen Groß: [Stellplatz Vertrag.docx]
17:30 Me: Signed, I'll put it into your letterbox tonight. Or can I mail it to hausverwaltung@example.com?
17:33 Jürgen Groß: Letterbox is better. With the e-mail I am at war.
== 2024-05-31
09:00 Jürgen Groß: The part has arrived. Tomorrow 10 o'clock?
09:02 Me: Perfect, thank you!
)";

constexpr std::string_view developers = R"(
# 15550001111@s.whatsapp.net
== 2024-05-27
15:20 Michael O'Brien: Why does my page end right in the middle
15:21 Me: Show me
15:22 Michael O'Brien: document.title = "</script><b>hello</b>";
15:23 Me: There's your problem. The first </script> wins, whatever quotes it stands in
15:24 Michael O'Brien: …
15:24 Michael O'Brien: And I suppose &amp; isn't & either
15:25 Me: In text it is: you write &amp;amp; if you want to see &amp; <!-- and no, this is no comment -->
15:27 Michael O'Brien: I want to go back to `printf`
15:28 Me: *bold* _italic_ ~struck~ and ```code``` at least all look right in here
15:29 Me: ~No more tags today.~ The plan:
    | > write the page without them
    | 1. *escape* first
    | 2. _then_ quote
    | - and `never` the other way round
    + 🙏 Michael O'Brien
15:40 Michael O'Brien: C:\Users\mike\new\table.txt also broke, \n and \t, I am so tired
15:41 Me: 100% {} ${HOME} $(whoami) %s "quotes" 'and' `more`; DROP TABLE lunch; --
15:42 Michael O'Brien: [unsupported]
15:42 Michael O'Brien: That last one is the first thing you said today that I agree with
== 2024-05-30
10:11 Michael O'Brien: New word from the German team: Donaudampfschifffahrtselektrizitätenhauptbetriebswerkbauunterbeamtengesellschaft
10:12 Me: 🤯
    > Michael O'Brien: New word from
10:14 Michael O'Brien: [audio] how I think it is pronounced
10:20 Michael O'Brien: https://example.com/a/very/long/path/that/goes/on/and/on/and/does/not/break/anywhere/because/it/has/no/blanks/in/it/index.html?first=1&second=%C3%A9&third=%2F#the-part-that-matters
10:21 Michael O'Brien: [waiting]
10:22 Me: I'll read it after lunch. http://localhost:8080/ is down again, btw
)";

constexpr std::string_view bookClub = R"(
# 120363000000000004@g.us
== 2024-05-25
16:58 Dr. Eleanor Whitfield-Hughes: [group description]
16:59 Grace 🌻: [added] Sam Okafor
17:00 Dr. Eleanor Whitfield-Hughes: Dear all, a gentle reminder that we meet on Tuesday at seven. I have made rather too much cake.
17:04 Grace 🌻: There is no such thing as too much cake
    > Dr. Eleanor Whitfield-Hughes: Dear all
    + 🎂 Me, Sam Okafor
17:06 Sam Okafor: I'm at page 40. There are 612 pages. Pray for me
17:07 Me: Audiobook at double speed, that's how I survived the last one
17:09 Dr. Eleanor Whitfield-Hughes: I shall pretend not to have read that, Ana.
    > Me: Audiobook
    + 😂 Me, Grace 🌻, Sam Okafor
== 2024-05-28
22:15 Grace 🌻: [photo] What a night
22:16 Sam Okafor: The cake won
    > Grace 🌻: What a night
22:18 Dr. Eleanor Whitfield-Hughes: Next month: something under 200 pages, as Samuel insists. Suggestions by Friday, please.
22:30 Me: "The Summer Book". 170 pages, an island, a grandmother. You'll all cry
22:31 Grace 🌻: Seconded!
22:40 Sam Okafor: 170? I'm in 📚
    > Me: "The Summer Book".
22:44 Dr. Eleanor Whitfield-Hughes: [poll] Shall we read "The Summer Book" in June?
    = Yes: Grace 🌻, Me, Sam Okafor
    = Yes, in a deck chair: Dr. Eleanor Whitfield-Hughes
    = Only with cake: Grace 🌻, Sam Okafor
22:50 Grace 🌻: [invitation] Cake Committee
    | Strictly for the planning of lemon cake
22:51 Grace 🌻: [lost photo] The recipe, in my grandmother's hand
22:58 Dr. Eleanor Whitfield-Hughes: [timer] 7776000
22:59 Sam Okafor: [strange event]
)";

constexpr std::string_view arabicFriend = R"(
# 966500000111@s.whatsapp.net
== 2024-05-24
10:00 ليلى حداد: صباح الخير! كيف حالك؟
10:05 Me: صباح النور ليلى، أنا بخير الحمد لله. وأنتِ؟
10:07 ليلى حداد: بخير. وصلت أمس من عمّان بعد رحلة طويلة (6 ساعات تأخير!)
10:08 Me: الحمد لله على السلامة 🌷
10:12 ليلى حداد: [photo] هذا المنظر من الشرفة
10:14 Me: ما شاء الله، جميل جداً
    > ليلى حداد: هذا المنظر من الشرفة
    + ❤️ ليلى حداد
== 2024-05-30
18:40 ليلى حداد: هل رأيتِ الرابط؟ https://example.com/ar/مقال قرأت المقال مرتين
18:44 Me: نعم، أرسلته إلى Grace أيضاً، وقالت: "I need more coffee for this" 😅
18:45 ليلى حداد: [voice]
18:46 ليلى حداد: [place] مقهى الشرفة, شارع الرينبو ١٤ (31.950412, 35.922813)
18:50 Me: تمام، نتكلم غداً الساعة 7:30 مساءً إن شاء الله
18:51 ليلى حداد: إن شاء الله ❤️
    > Me: تمام، نتكلم غداً
)";

constexpr std::string_view hebrewFriend = R"(
# 972500000111@s.whatsapp.net
== 2024-05-26
08:15 נועה לוי: בוקר טוב! את מגיעה לתל אביב ביולי?
08:20 Me: בוקר אור נועה! כן, ב־14 ביולי, טיסה LA704 בשעה 06:50
08:21 נועה לוי: איזה כיף!! את ישנה אצלנו, אין ויכוח
08:22 Me: אין ויכוח 😄
08:30 נועה לוי: [photo] הילדים כבר ציירו לך שלט
    + 🥰 Me
== 2024-05-31
14:05 Me: מה להביא לכם?
14:09 נועה לוי: רק את עצמך. ואולי קפה, 2 חבילות, מהטחון ההוא (Santos)
14:10 Me: סגור ☕
    > נועה לוי: רק את עצמך
14:20 נועה לוי: [video call] 9:41
)";

constexpr std::string_view japaneseFriend = R"(
# 819000000111@s.whatsapp.net
== 2024-05-25
11:30 佐藤 健: お久しぶりです！お元気ですか？
11:42 Me: 健さん、こんにちは！元気です。東京はもう暑いですか？
11:45 佐藤 健: 昨日は二十八度でした。もう夏みたいです 😅
11:46 佐藤 健: [photo] 週末に山へ行きました
11:50 Me: きれい！雲の上ですね
    > 佐藤 健: 週末に山へ行きました
    + 😊 佐藤 健
== 2024-05-30
13:20 佐藤 健: 同窓会の日程が決まりました。十月十二日（土）十八時から、新宿の「ひまわり」です。地図はこちら：https://example.com/map?q=新宿
13:25 Me: 行きます！飛行機を予約しますね ✈️
13:26 佐藤 健: やった！みんな喜びます
13:26 佐藤 健: [sticker]
)";

constexpr std::string_view chineseFriend = R"(
# 8613000000111@s.whatsapp.net
== 2024-05-27
02:10 王芳: 早上好！你那边现在是晚上吧？
02:12 Me: 对，晚上十一点多，还没睡 😂
02:13 王芳: 那我长话短说：包裹寄到了，谢谢你的咖啡！
02:15 王芳: [photo] 今天早上的第一杯
02:16 Me: 太好了！喜欢吗？
    > 王芳: 今天早上的第一杯
02:20 王芳: 非常喜欢。我妈妈本来只喝茶，现在每天早上都问“今天有咖啡吗”
== 2024-05-31
12:00 王芳: [voice]
12:03 Me: 哈哈哈哈哈哈
12:04 Me: 周末视频聊？
12:05 王芳: 好，周六晚上八点（北京时间）
12:05 Me: 👌
12:06 王芳: [video call]
)";

constexpr std::array scripts = {filmFriends,  landlord,     developers,     bookClub,
                                arabicFriend, hebrewFriend, japaneseFriend, chineseFriend};

}  // namespace

std::span<const std::string_view> scriptsFromAbroad() { return scripts; }

}  // namespace Fixture
