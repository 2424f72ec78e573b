import { LiveView } from './live_view.js';
import { Meters } from './meters.js';
import { receiver_lines } from './receiver_lines.js';
import { Socket } from './socket.js';

const find = (selector) => document.querySelector(selector);
const number = new Intl.NumberFormat('en');
const options = new URLSearchParams(location.search);
const poll_ms = 1000; // of the status, while there is no socket
const fresh_ms = 10000; // a loss is worth a look for so long
const rest_ms = 1000; // without a picture: the host rests

const cards = new Map(); // by id of the source
let status = null;

const set = (element, text) => {
  if (element.textContent !== text) element.textContent = text;
};

const speak = (text) => set(find('#spoken'), text);

// Words.

const rate_text = ([n, d]) => `${(n / d).toFixed(d === 1 ? 0 : 2)} fps`;
const layouts = {
  UYVY: '4:2:2, 8 bit', UYVA: '4:2:2 and alpha, 8 bit', BGRA: 'RGB and alpha, 8 bit', BGRX: 'RGB, 8 bit',
};
const mounts = { default: 'H.264', raw: 'uncompressed', 'raw+key': 'fill and key', bgra: 'BGRA', webrtc: 'page', mjpeg: 'JPEG', still: 'picture' };

function for_text(seconds) {
  const s = Math.floor(seconds);
  if (s < 60) return `${s} s`;
  if (s < 3600) return `${Math.floor(s / 60)} min`;
  return `${Math.floor(s / 3600)} h ${Math.floor((s % 3600) / 60)} min`;
}

function program_text(agent) {
  const browser = agent.match(/(Firefox|Edg|OPR|Chrome|Safari)\/(\d+)/g)?.sort((a, b) => rank(a) - rank(b))[0];
  return agent.startsWith('Mozilla/') && browser ? browser.replace('Edg/', 'Edge ').replace('OPR/', 'Opera ').replace('/', ' ') : agent || 'unnamed';
}
const rank = (name) => ['Firefox', 'Edg', 'OPR', 'Chrome', 'Safari'].findIndex((known) => name.startsWith(known));

const address_text = (address) => {
  const plain = address.replace(/^::ffff:/, '');
  return /^(127\.|::1$)/.test(plain) ? 'this machine' : plain;
};

// One source.

class Card {
  constructor(source) {
    this.element = find('#source').content.cloneNode(true).firstElementChild;
    this.id = source.id;
    this.losses = new Map();
    this.meters = new Meters(this.get('.meters canvas'));
    this.make_live(source.path);
    this.get('.sound').onclick = () => this.toggle_sound();
    this.get('.large').onclick = () => this.full_screen();
    this.lines_of = '';
    this.visible = false;
    this.watcher = new IntersectionObserver(([entry]) => {
      this.visible = entry.isIntersecting;
      this.run();
    }, { rootMargin: '200px' });
    this.watcher.observe(this.element);
  }

  get(selector) {
    return this.element.querySelector(selector);
  }

  make_live(path) {
    this.path = path;
    this.live = new LiveView(this.element, path, socket, options.get('view') ?? '');
  }

  run() {
    if (this.visible && !document.hidden) this.live.start();
    else {
      this.live.stop();
      this.meters.clear();
    }
    tell_levels();
  }

  remove() {
    this.watcher.disconnect();
    this.live.stop();
    this.element.remove();
  }

  toggle_sound() {
    const video = this.live.video;
    video.muted = !video.muted;
    this.get('.sound').setAttribute('aria-pressed', String(!video.muted));
    this.get('.sound').textContent = video.muted ? 'Sound off' : 'Sound on';
  }

  full_screen() {
    if (document.fullscreenElement) document.exitFullscreen();
    else this.get('.frame').requestFullscreen?.();
  }

  update(source) {
    this.source = source;
    this.element.dataset.path = source.path;
    set(this.get('h2'), source.name);
    this.get('.view').setAttribute('aria-label', `Live picture of ${source.name}`);
    this.get('img.view').alt = `Live picture of ${source.name}`;
    set(this.get('.network'), source.network_name ? `On the network as “${source.network_name}”` : 'Not announced on the network');
    this.update_state(source);
    this.update_facts(source);
    this.update_losses(source);
    this.update_receivers(source.receivers);
    this.update_lines(source);
  }

  update_state(source) {
    const now = performance.now();
    if (source.frames_in !== this.frames_in) {
      this.frames_in = source.frames_in;
      this.moved_at = now;
    }
    const watched = source.receivers.length > 0;
    const [text, kind] = source.away ? ['away', 'warn']
      : !source.format ? ['no picture yet', 'warn']
      : !watched ? ['ready', 'good']
      : now - this.moved_at < rest_ms + 500 ? ['live', 'good'] : ['host rests', 'warn'];
    const chip = this.get('.state');
    set(chip, text);
    chip.className = `state chip ${kind}`;
  }

  update_facts(source) {
    const { format, audio } = source;
    set(this.get('.picture'), format ? `${format.width} × ${format.height}` : '–');
    set(this.get('.rate'), format ? `${rate_text(format.rate)}, ${format.frame_format}` : '–');
    set(this.get('.format'), format ? `${format.fourcc}, ${layouts[format.fourcc] ?? ''}` : '–');
    set(this.get('.color'), format ? format.color : '–');
    set(this.get('.audio'), `${number.format(audio.rate / 1000)} kHz, ${audio.channels} channel${audio.channels === 1 ? '' : 's'}`);
    set(this.get('.process'), String(source.pid));
    const { latency_ms } = this.live.figures;
    set(this.get('.latency'), latency_ms === null ? '–' : `${Math.round(latency_ms)} ms`);
    const offset = source.av_offset_ms;
    set(this.get('.offset'), offset === null ? '–' : Math.abs(offset) < 0.5 ? 'in step'
      : `picture ${Math.abs(offset).toFixed(1)} ms ${offset > 0 ? 'late' : 'early'}`);
    if (format) {
      const shape = format.aspect > 0.05 ? format.aspect : format.width / format.height;
      this.get('.frame').style.aspectRatio = String(Math.max(shape, 1.2));
      for (const view of this.element.querySelectorAll('.view'))
        view.style.objectFit = Math.abs(shape * format.height - format.width) > 2 ? 'fill' : 'contain';
    }
  }

  update_losses(source) {
    const lost = source.losses;
    const causes = [
      ['Host late', lost.video_late + lost.audio_late, 'The host missed its own clock. Lower the playback resolution or render the sequence.'],
      ['Publisher late', lost.video_no_slot + lost.audio_no_room + lost.audio_displaced, 'This machine is too busy to take every frame. Close what is not needed.'],
      ['Encoder late', lost.encoder_late + lost.encoder_late_sound, 'The encoder cannot keep up. A smaller sequence, a hardware encoder, or the uncompressed address helps.'],
      ['Receiver late', lost.receiver_late + lost.receiver_late_sound, 'A receiver or its network is too slow; see Lost in the list below. Others are not touched.'],
    ];
    const list = this.get('.losses');
    if (!list.children.length)
      list.replaceChildren(...causes.map(([name, , advice]) => {
        const item = document.createElement('li');
        item.title = advice;
        item.append(document.createElement('b'), Object.assign(document.createElement('span'), { textContent: name }));
        return item;
      }), Object.assign(document.createElement('li'), { className: 'advice', hidden: true }));
    const now = performance.now();
    const advices = [];
    causes.forEach(([name, count, advice], k) => {
      const known = this.losses.get(name);
      if (known === undefined || count < known.count) this.losses.set(name, { count, at: -Infinity });
      else if (count > known.count) this.losses.set(name, { count, at: now });
      const fresh = now - this.losses.get(name).at < fresh_ms;
      const item = list.children[k];
      set(item.firstElementChild, number.format(count));
      item.className = fresh ? 'fresh' : count ? 'some' : '';
      if (fresh) advices.push(advice);
    });
    const advice = list.lastElementChild;
    advice.hidden = !advices.length;
    set(advice, advices.join(' '));
  }

  update_receivers(receivers) {
    set(this.get('.count'), receivers.length ? String(receivers.length) : '');
    this.get('.none').hidden = receivers.length > 0;
    this.get('table').hidden = receivers.length === 0;
    const rows = this.get('tbody');
    while (rows.rows.length > receivers.length) rows.deleteRow(-1);
    receivers.forEach((who, k) => {
      const row = rows.rows[k] ?? rows.insertRow();
      const behind = who.frames_dropped > (row.dataset.of === who.address ? Number(row.dataset.dropped) : 0);
      Object.assign(row.dataset, { of: who.address, dropped: who.frames_dropped });
      const [state, kind] = !who.playing ? ['waits', ''] : behind ? ['too slow', 'bad'] : ['receives', 'good'];
      const cells = [
        ['', address_text(who.address)], ['', program_text(who.agent)], ['takes', mounts[who.mount] ?? who.mount], ['over', who.transport || '–'],
        ['for', for_text(who.since_s)], ['frames', number.format(who.frames_sent)], ['lost', number.format(who.frames_dropped)],
      ];
      cells.forEach(([label, text], n) => {
        const cell = row.cells[n] ?? row.insertCell();
        if (label) cell.dataset.label = label;
        cell.className = n === 5 || n === 6 ? 'number' : '';
        set(cell, text);
      });
      const cell = row.cells[7] ?? row.insertCell();
      const chip = cell.firstElementChild ?? cell.appendChild(document.createElement('span'));
      chip.className = `chip ${kind}`;
      set(chip, state);
    });
  }

  update_lines(source) {
    const of = `${source.url} ${source.format?.alpha}`;
    if (this.lines_of === of) return;
    this.lines_of = of;
    const tabs = this.get('.tabs');
    const panels = this.get('.panels');
    tabs.replaceChildren();
    panels.replaceChildren();
    receiver_lines(source, location.href).forEach(([kind, lines, note], k) => {
      const tab = Object.assign(document.createElement('button'), { type: 'button', role: 'tab', textContent: kind, id: `tab-${source.id}-${k}` });
      const panel = Object.assign(document.createElement('div'), { role: 'tabpanel', hidden: k > 0, id: `panel-${source.id}-${k}` });
      tab.setAttribute('aria-selected', String(k === 0));
      tab.setAttribute('aria-controls', panel.id);
      panel.setAttribute('aria-labelledby', tab.id);
      tab.onclick = () => {
        for (const other of tabs.children) other.setAttribute('aria-selected', String(other === tab));
        for (const other of panels.children) other.hidden = other !== panel;
      };
      for (const [label, text] of lines) panel.append(...line(label, text));
      if (note) panel.append(Object.assign(document.createElement('p'), { className: 'note', textContent: note }));
      tabs.append(tab);
      panels.append(panel);
    });
  }
}

function line(label, text) {
  const copy = Object.assign(document.createElement('button'), { type: 'button', className: 'copy', textContent: 'Copy' });
  copy.dataset.text = text;
  copy.setAttribute('aria-label', `Copy: ${label}`);
  const row = Object.assign(document.createElement('div'), { className: 'line' });
  row.append(Object.assign(document.createElement('code'), { textContent: text }), copy);
  return [Object.assign(document.createElement('p'), { className: 'label', textContent: label }), row];
}

async function copy(button) {
  try {
    await navigator.clipboard.writeText(button.dataset.text);
  } catch {
    // Without a secure context there is only the old way.
    const field = Object.assign(document.createElement('textarea'), { value: button.dataset.text, className: 'unseen' });
    document.body.append(field);
    field.select();
    document.execCommand('copy');
    field.remove();
  }
  button.textContent = 'Copied';
  button.classList.add('done');
  speak('Copied');
  setTimeout(() => {
    button.textContent = 'Copy';
    button.classList.remove('done');
  }, 1600);
}

// The whole page.

function show(next) {
  status = next;
  set(find('#machine'), next.machine);
  set(find('#version'), `Version ${next.version}`);
  document.title = next.sources.length ? `${next.sources.map((one) => one.name).join(', ')} – Quillo Transmit` : 'Quillo Transmit';
  const list = find('#sources');
  list.setAttribute('aria-busy', 'false');
  const present = new Set(next.sources.map((one) => one.id));
  for (const [id, card] of cards)
    if (!present.has(id)) {
      card.remove();
      cards.delete(id);
      speak(`${card.source.name} has gone`);
    }
  for (const source of next.sources) {
    let card = cards.get(source.id);
    if (!card) {
      card = new Card(source);
      cards.set(source.id, card);
      list.append(card.element);
      speak(`${source.name} has come`);
    }
    card.update(source);
  }
  find('#empty').hidden = next.sources.length > 0;
  list.hidden = next.sources.length === 0;
  tell_levels();
}

function link(text, kind) {
  const chip = find('#link');
  set(chip, text);
  chip.className = `chip ${kind}`;
}

// Levels are computed for what is looked at only.
let levels_told = '';
function tell_levels() {
  const paths = [...cards.values()].filter((card) => card.live.running).map((card) => card.path);
  const text = JSON.stringify(paths);
  if (text === levels_told || !socket.open) return;
  levels_told = text;
  socket.send({ levels: paths });
}

async function poll() {
  if (socket.open) return;
  try {
    const response = await fetch('status.json', { cache: 'no-store' });
    if (!response.ok) throw new Error(response.statusText);
    show(await response.json());
    link('connected', 'good');
  } catch {
    link('publisher not running', 'bad');
  }
}

const socket = new Socket({
  open() {
    link('connected', 'good');
    levels_told = '';
    for (const card of cards.values()) {
      card.live.stop();
      card.run();
    }
  },
  closed() {
    link('connection lost', 'bad');
    for (const card of cards.values()) card.live.stop('No connection to the publisher');
  },
  status: show,
  levels(all) {
    for (const card of cards.values()) if (all[card.path]) card.meters.take(all[card.path]);
  },
  message(message) {
    for (const card of cards.values()) {
      if (message.delay && card.live.id in message.delay) card.live.server_ms = message.delay[card.live.id];
      card.live.take(message);
    }
  },
});

setInterval(poll, poll_ms);
setInterval(() => {
  for (const card of cards.values()) card.live.measure();
}, 1000);
document.addEventListener('visibilitychange', () => {
  for (const card of cards.values()) card.run();
});
document.addEventListener('click', (event) => {
  const button = event.target.closest?.('button.copy');
  if (button) copy(button);
});
