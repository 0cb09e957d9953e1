// A message of every kind, as an archive holds them.
import { media, message, mine, notice, someTime } from './archive.js';

const of = (kind, text, info = {}, more = {}) => message(text, { kind, info, ...more });

export const place = (more = {}) =>
  of('place', 'Location: Blue Cafe, 12 Main St (35.638504, -78.876053)', {
    address: '12 Main St',
    lat: 35.638504,
    live: false,
    lon: -78.876053,
    name: 'Blue Cafe',
    ...more,
  });

export const contacts = (...people) =>
  of('contacts', `Contacts: ${people.map(({ name }) => name).join('; ')}`, { people });

export const poll = (more = {}) =>
  of('poll', 'Poll: Which day? — Monday (2: You, Ben), Friday (1: Carla), Never (0)', {
    question: 'Which day?',
    options: [
      { words: 'Monday', names: ['You', 'Ben'] },
      { words: 'Friday', names: ['Carla'] },
      { words: 'Never', names: [] },
    ],
    ...more,
  });

export const call = (text, info, more) => of('call', text, info, more);
export const missing = (part, text, info = {}, more) => of('missing', text, { part, ...info }, more);
export const quiet = (kind, text, more) => of(kind, text, {}, more);
export const invite = () => of('invite', 'Invitation to the group Garden\nCome in!', { caption: 'Come in!', group: 'Garden' });
export const product = () =>
  of('product', 'Product: A lamp, EUR 19.99\nBright and small', {
    description: 'Bright and small',
    price: 'EUR 19.99',
    title: 'A lamp',
  });

export const business = () =>
  of(
    'business',
    'Your order is *on its way*.\nThank you\n[Track] https://example.com/track?id=1\n[Call us] +1 555 000 0009\n[Not this] javascript:alert(1)\n[Stop]',
    {
      buttons: [
        { url: 'https://example.com/track?id=1', words: 'Track' },
        { url: '+1 555 000 0009', words: 'Call us' },
        { url: 'javascript:alert(1)', words: 'Not this' },
        { words: 'Stop' },
      ],
    },
  );

export const linked = (link = {}) =>
  message('look: https://example.com/page', {
    info: { link: { summary: 'What the page is about.', title: 'An example page', url: 'https://example.com/page', ...link } },
  });

const carla = { name: 'Carla Souza', phones: ['+1 555 000 0009'], emails: ['carla@example.com'] };
const quote = { me: false, name: 'Ana', part: 'photo', thing: 'Look at this sunset over the bay', to: '1' };

// A chat to look at: everything once, as friends of a group might have sent it.
export function gallery() {
  const from = (sender, one) => ({ ...one, sender });
  const said = [
    message('Who is in for *Saturday*? _Bring_ your own ~plates~ cups, see ```menu.txt``` or `README`', { id: '1' }),
    notice('Ana added Ben'),
    ...['Carla joined using the invite link', 'You changed the group name to “Garden”', 'Duda left', 'Ben changed the group picture', 'Messages and calls are end-to-end encrypted'].map((text) => notice(text)),
    mine('Count me in, @15550000002!', { mentions: { 15550000002: 'Ben' }, quote: { ...quote, part: 'text', thing: 'Who is in for Saturday?' }, reactions: [{ emoji: '👍', names: ['Ana', 'Ben'] }, { emoji: '❤️', names: ['Carla'] }] }),
    from('Ben', message('> Bring cups\nWill do. The list:\n- tea\n- cake\n1. walk\n2. talk', { marks: ['forwarded', 'starred'] })),
    from('Carla', message('A reply to somebody elsewhere', { quote: { ...quote, to: undefined, name: 'Duda', part: 'voiceMessage', thing: 'Voice message' } })),
    place(),
    { ...place({ name: undefined, address: undefined, live: true }), me: true, sender: 'You' },
    from('Ben', contacts(carla, { name: 'Dr. Weiß', phones: ['030 123 456'], emails: [] })),
    poll(),
    { ...poll(), me: true, sender: 'You', reactions: [{ emoji: '🎉', names: ['Ben'] }] },
    call('Voice call, 1:35', { missed: false, seconds: 95, video: false }),
    mine('Video call, 1:44', { kind: 'call', info: { missed: false, seconds: 104, video: true } }),
    call('Missed voice call', { missed: true, video: false }),
    missing('photo', 'Photo (not in the backup)'),
    missing('voiceMessage', 'Voice message, 0:07 (not in the backup)', { seconds: 7 }),
    missing('document', 'Document: report.pdf (not in the backup)', { name: 'report.pdf' }),
    { ...missing('video', 'The whole evening', { caption: 'The whole evening', seconds: 3723 }), me: true, sender: 'You', marks: ['viewOnce'] },
    quiet('deleted', 'This message was deleted'),
    mine('You deleted this message', { kind: 'deleted', info: {} }),
    quiet('waiting', 'Waiting for this message'),
    quiet('unsupported', 'Unsupported message (type 91)'),
    invite(),
    product(),
    from('Shop', business()),
    linked(),
    mine('https://example.com/page', { info: linked().info }),
    from('Ben', message('Round and round', { media: media('videos', 'Club/round.mp4'), marks: ['round'] })),
    mine('', { text: undefined, media: media('photos', 'Club/a.png'), marks: ['viewOnce', 'starred'], reactions: [{ emoji: '😮', names: ['Ana'] }] }),
    from('Ben', message('Dance', { media: media('videos', 'Club/dance.mp4'), marks: ['gif', 'forwarded'] })),
    from('Ben', message('Here it is', { quote, media: media('photos', 'Club/a.png') })),
  ];
  return said.map((one, index) => ({ ...one, ts: someTime + index * 60 }));
}

// What the phone deleted after the archive had it: the label stands beside the time of whatever it was.
export function kept() {
  const file = (kind, name) => ({ text: undefined, media: media(kind, `Club/${name}`) });
  const said = [
    message('Never mind'),
    mine('Hm', { marks: ['deletedLater', 'gone', 'starred'] }),
    message('🎉'),
    mine('', file('photos', 'a.png')),
    message('', file('stickers', 'a.png')),
    message('', file('voiceNotes', 'note.opus')),
    mine('', file('documents', 'plan.pdf')),
    message('', file('videos', 'dance.mp4')),
    place(),
    poll(),
    call('Missed voice call', { missed: true, video: false }),
    missing('photo', 'Photo (not in the backup)'),
  ];
  return said.map((one, index) => ({ marks: ['deletedLater'], ...one, ts: someTime + index * 60 }));
}
