#include "Tests/Support/SampleScripts.h"

#include <array>

namespace Fixture {

namespace {

constexpr std::string_view family = R"(
# 120363000000000001@g.us
== 2024-05-18
17:55 Marina Duarte: [group renamed] Família ❤️
17:56 Tia Célia: [group picture]
18:02 Marina Duarte: Gente, e a viagem? Se a gente não decidir esse fim de semana vai ficar caro 😬
18:04 Tia Célia: Eu voto em praia
18:04 Rafael: praia praia praia
    + 😂 Marina Duarte, Me
18:06 Me: Praia em julho, gente? Faz frio
18:07 Rafael: frio pra você que é friorenta kkkkk
    > Me: Praia em julho, gente?
    + 🙄 Me
18:09 Marina Duarte: Que tal serra? Lareira, fondue, ninguém passa calor
18:12 Tia Célia: [photo] Olhem o lugar que a minha vizinha foi!
    + 😍 Me, Marina Duarte, Vovó
18:13 Me: Nossa, que vista
    > Tia Célia: Olhem o lugar
18:15 Vovó: Meus filhos a vovó vai onde vocês forem. Só não pode ter muita escada por causa do joelho 🙏
18:16 Marina Duarte: Sem escada, @Vovó, prometido ❤️
    + ❤️ Vovó, Tia Célia
18:18 Me: [poll] Qual fim de semana?
    = 5 a 7 de julho: Marina Duarte, Vovó, Me
    = 12 a 14 de julho: Tia Célia
    = Tanto faz: Rafael
18:20 Rafael: então é isso, serra. quem dirige?
18:21 Me: Eu e a Marina revezamos
== 2024-05-21
20:30 Marina Duarte: Fiz uma lista. Completem o que faltar:
    |
    | 1. Casacos (sério)
    | 2. Jogo de cartas
    | 3. Remédio da vó
    | 4. Café bom, porque o da pousada ninguém sabe
    | 5. Caixa de som
20:33 Tia Célia: 6. Bolo de fubá, esse é comigo
20:33 Rafael: 7. fome
    + 😂 Me, Tia Célia, Vovó
20:35 Me: 😂😂😂
20:41 Marina Duarte: [Roteiro da viagem.pdf]
20:42 Marina Duarte: Botei os horários no arquivo. Saída *7h em ponto*. EM PONTO, @Rafael
    ! starred
20:44 Rafael: [sticker]
== 2024-05-25
11:10 Me: Reservei! Três quartos, um no térreo. Confirmação aqui: https://example.com/reservas?id=48213&hospedes=6
11:05 Tia Célia: [place] Pousada Alto da Serra, Estrada do Lago 1200 (-22.736214, -45.591308)
11:12 Vovó: [voice]
11:15 Tia Célia: Que alegria ouvir a mamãe assim animada
11:16 Me: ❤️❤️❤️
11:30 Marina Duarte: Quanto deu pra cada?
11:34 Me: 6 pessoas, R$ 2.340 no total, então R$ 390 cada. Podem mandar pix pra ana.lima@example.com quando der, sem pressa
11:36 Rafael: pago em bolo?
    > Me: 6 pessoas
11:37 Tia Célia: O bolo é meu, menino
    > Rafael: pago em bolo?
    + 😂 Me, Marina Duarte, Rafael, Vovó
11:52 Vovó: 🌻🌻 Quem passar esta flor para 10 amigas terá um domingo de luz 🌻🌻
    ! forwarded
11:53 Rafael: [deleted]
11:54 Marina Duarte: Eu li, Rafael 👀
== 2024-05-31
19:20 Rafael: [lost video] 0:48
19:22 Rafael: [video] treinando pra trilha
19:25 Vovó: Cuidado menino
19:27 Marina Duarte: [photo] Chegaram os casacos!
19:28 Marina Duarte: [photo]
19:31 Me: A gente vai parecer uma família de pinguins
19:32 Tia Célia: 🐧🐧🐧🐧🐧🐧
    > Me: A gente vai parecer
19:34 Marina Duarte: [video call] 5:12
19:40 Vovó: Boa noite meus amores. Durmam com Deus. A vovó já fez a mala
)";

constexpr std::string_view football = R"(
# 5511900002222-1400000000@g.us
== 2024-05-22
11:58 Michael O'Brien: [joined by link]
11:59 Rafael: [admin] João
12:01 Rafael: quem vai quinta?
12:02 João Conceição: Eu
12:02 Me: Eu
12:05 Michael O'Brien: Count me in, mas o joelho ainda dói
12:06 Rafael: 1. rafa
    | 2. joão
    | 3. ana
    | 4. mike (goleiro 😂)
12:09 Michael O'Brien: Goleiro again?? 😤
    > Rafael: 1. rafa
    + 😂 Rafael, João Conceição, Me
12:15 João Conceição: Falta 6. Chamem gente
== 2024-05-23
22:40 João Conceição: [photo] Antes
22:40 João Conceição: [photo] Depois
22:43 Rafael: GOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOOL
22:44 Me: [video] o lance do ano
    + 🔥 Rafael, João Conceição
    + 👎 Michael O'Brien
22:46 Michael O'Brien: That was offside and you know it
    > Me: o lance
22:47 Rafael: [gif]
22:48 João Conceição: [round]
22:50 Me: 7 x 6. Placar justo, segundo quem ganhou
== 2024-05-30
09:15 Rafael: campo confirmado hoje 20h. são R$ 22 pra cada, o telefone do seu Zé é +55 11 90000-7777 se alguém se perder
09:16 Rafael: [place] Quadra do seu Zé, Rua das Palmeiras 45 (-23.561684, -46.655981)
09:18 João Conceição: Levo os coletes
09:20 Me: Levo água
09:21 Michael O'Brien: I bring excuses
    + 😂 Me, Rafael
09:21 João Conceição: @Michael O'Brien traz a bola também
09:22 Rafael: [sticker]
)";

constexpr std::string_view grandmother = R"(
# 5511900009999@s.whatsapp.net
== 2024-05-19
07:01 Vovó: [voice call]
07:05 Vovó: Bom dia minha flor 🌹
    + 🌹 Me
07:06 Vovó: Sonhei com você
08:20 Me: Bom dia, vó! Sonho bom?
08:31 Vovó: Você era pequena e corria atrás das galinhas do seu avô. A mesma carinha
08:33 Me: Eu lembro delas! A carijó era brava
08:40 Vovó: [voice]
08:44 Me: Kkkkk vó, essa história eu não conhecia
== 2024-05-26
16:02 Me: [photo] Olha o que eu plantei
16:30 Vovó: QUE LINDO
16:30 Vovó: Desculpa apertei a tecla errada, não estou gritando
16:31 Me: Pode gritar, vó 😂
16:33 Me: [video call] 12:04
16:35 Vovó: Rega só de manhã e não molha a folha. E conversa com ela, planta gosta
== 2024-05-31
18:10 Vovó: Receita do bolo que você pediu:
    |
    | 3 ovos
    | 2 xícaras de açúcar
    | 1 xícara de óleo
    | 2 xícaras de fubá
    | 1 xícara de farinha
    | 1 colher de fermento
    |
    | Bate tudo menos o fermento. Forno médio até o cheiro chegar na sala. Não abre antes, senão sola. Se solar come assim mesmo com café que fica uma delícia, seu avô preferia
    ! starred
    + ❤️ Me
18:14 Me: "Até o cheiro chegar na sala" é a melhor medida do mundo
    > Vovó: Receita do bolo
18:15 Me: Obrigada, vó ❤️
18:20 Vovó: [lost voice] 1:12
18:22 Vovó: [audio]
18:23 Vovó: Essa é a música que tocava no rádio quando fiz esse bolo pela primeira vez
18:25 Me: 🥹
)";

constexpr std::string_view marina = R"(
# 5511900001111@s.whatsapp.net
== 2024-05-29
13:02 Marina Duarte: Você viu o grupo da família?
13:03 Me: Vi kkkk o Rafael não presta
13:05 Marina Duarte: Preciso de ajuda: o que dou de aniversário pra Célia?
13:09 Me: Um vaso. Ou aquele curso de cerâmica que ela vive comentando
13:10 Marina Duarte: CURSO. Genial
    > Me: Um vaso.
    + 💡 Me
13:11 Marina Duarte: [contact] Helena Prado (cerâmica), +55 11 90000-3131
13:11 Me: O horário da aula: https://example.com/ceramica/agenda
    ~ Ateliê da Helena — Aulas de cerâmica às terças e sábados, para quem nunca pôs a mão no barro
13:12 Marina Duarte: Metade cada?
13:12 Me: Fechado 🤝
13:20 Me: [photo once]
13:21 Marina Duarte: [lost photo once]
13:22 Marina Duarte: [deleted]
== 2024-05-31
20:58 Marina Duarte: [voice call] 3:27
21:02 Marina Duarte: Kkkk e a sua planta?
    > Me: Olha o que eu plantei na varanda
21:14 Marina Duarte: [photo] Consegui a última vaga
21:15 Me: Ela vai chorar
21:16 Marina Duarte: Eu já chorei só de pagar
21:20 Me: [voice]
21:24 Marina Duarte: Combinado. Amanhã às 9 na padaria?
21:24 Me: 👍🏽
)";

constexpr std::string_view bakery = R"(
# 551130001111@s.whatsapp.net
== 2024-05-27
08:00 Padaria: [encrypted]
08:00 Padaria: [business chat]
08:02 Padaria: [business] Padaria Central
    | Bom dia! O pão de queijo sai do forno às 8h e às 16h.
    | Quer reservar o seu?
    | Rua das Flores 12
    = Reservar: https://example.com/padaria/reserva
    = Ligar: +55 11 3000-1111
    = Hoje não
08:05 Me: Hoje não
== 2024-05-30
16:10 Padaria: [product] Bolo de fubá inteiro, BRL 38.00
    | Com erva-doce, serve 12 pessoas
16:14 Me: Dois, por favor! É aniversário da minha tia
    + 🎂 Padaria
16:15 Padaria: Reservado para sábado às 10h ✅
)";

constexpr std::string_view neighbourhood = R"(
# 120363000000000099@newsletter
== 2024-05-22
07:00 Notícias: [channel created]
07:10 Notícias: Feira de sábado: barraca nova de queijos na rua 3
    + 👍 212
    + 🧀 87
== 2024-05-31
07:05 Notícias: Amanhã não passa o caminhão da reciclagem
    + 😮 41
    + 👍 18
)";

// What Marina showed to everybody for a day.
constexpr std::string_view status = R"(
# 5511900001111@status
== 2024-05-30
10:12 Marina Duarte: [photo] Oficina de cerâmica, primeira tentativa
10:13 Marina Duarte: O vaso ficou torto. Eu gostei
)";

constexpr std::array scripts = {family, football, grandmother, marina, bakery, neighbourhood, status};

}  // namespace

std::span<const std::string_view> scriptsFromHome() { return scripts; }

}  // namespace Fixture
