// The live picture of one source: WebRTC with sound where that works, else JPEG pictures one after the other.

const patience_ms = 4000; // for the first WebRTC picture
const again_ms = 20000; // until WebRTC is tried anew after it failed
const most_streams = 3; // of JPEG: a browser has six connections to a machine; the other views take single pictures
const still_ms = 1000;
const gone_ms = 700;

let last_id = 0;
let jpeg_streams = 0;

export class LiveView {
  constructor(card, path, socket, forced) {
    this.card = card;
    this.path = path;
    this.socket = socket;
    this.forced = forced; // 'mjpeg', or empty for the best that works
    this.video = card.querySelector('video');
    this.image = card.querySelector('img.view');
    this.veil = card.querySelector('.veil');
    this.way = card.querySelector('.way');
    this.running = false;
    this.mode = '';
    this.server_ms = null;
    this.figures = { latency_ms: null, av_ms: null };
    this.timers = new Set();
  }

  start() {
    if (this.running) return;
    this.running = true;
    this.began = performance.now();
    this.first_picture_ms = null;
    this.say('Connecting to the picture…');
    if (this.forced === 'mjpeg' || !window.RTCPeerConnection || !this.socket.open) this.start_jpeg();
    else this.start_rtc();
  }

  stop(text = '') {
    this.running = false;
    this.stop_rtc();
    this.stop_jpeg();
    for (const timer of this.timers) clearTimeout(timer);
    this.timers.clear();
    this.mode = '';
    this.say(text);
    this.label();
  }

  later(ms, f) {
    const timer = setTimeout(() => {
      this.timers.delete(timer);
      f();
    }, ms);
    this.timers.add(timer);
  }

  // WebRTC: the publisher offers, we answer.

  start_rtc() {
    this.id = ++last_id;
    this.stream = new MediaStream();
    const codecs = RTCRtpReceiver.getCapabilities('video')?.codecs ?? [];
    const video = [...new Set(codecs.map((codec) => codec.mimeType.replace(/^video\//, '').toUpperCase()))];
    this.socket.send({ watch: this.id, path: this.path, video });
    const id = this.id;
    this.later(patience_ms, () => {
      if (this.id === id && this.mode !== 'rtc') this.fall_back();
    });
  }

  async take(message) {
    try {
      if (message.offer === this.id) await this.answer(message.sdp);
      else if (message.candidate === this.id && this.peer)
        await this.peer.addIceCandidate({ candidate: message.text, sdpMLineIndex: message.mline });
      else if (message.refused === this.id) this.refused(message.why);
    } catch (error) {
      console.warn(error);
      this.fall_back();
    }
  }

  // A source that has just gone is often back in a moment, under the same address.
  refused(why) {
    if (!/gone/.test(why)) return this.fall_back();
    this.stop('The source has gone');
    this.running = true;
    this.later(gone_ms, () => {
      this.running = false;
      if (this.card.isConnected) this.start();
    });
  }

  async answer(sdp) {
    const id = this.id;
    const peer = new RTCPeerConnection();
    this.peer = peer;
    peer.ontrack = ({ track, receiver }) => {
      // A monitor shows what is now: nothing is held back for smoothness.
      if ('jitterBufferTarget' in receiver) receiver.jitterBufferTarget = 0;
      else if ('playoutDelayHint' in receiver) receiver.playoutDelayHint = 0;
      this.stream.addTrack(track);
      if (track.kind === 'video') this.show_video();
    };
    peer.onicecandidate = ({ candidate }) => {
      if (candidate) this.socket.send({ candidate: id, mline: candidate.sdpMLineIndex, text: candidate.candidate });
    };
    peer.onconnectionstatechange = () => {
      if (this.peer === peer && peer.connectionState === 'failed') this.fall_back();
    };
    await peer.setRemoteDescription({ type: 'offer', sdp });
    await peer.setLocalDescription();
    this.socket.send({ answer: id, sdp: peer.localDescription.sdp });
  }

  show_video() {
    this.video.srcObject = this.stream;
    this.video.play().catch(() => {});
    const id = this.id;
    const shown = () => {
      if (this.id === id && this.running) this.showing('rtc', this.video);
    };
    if (this.video.requestVideoFrameCallback) this.video.requestVideoFrameCallback(shown);
    else this.video.onloadeddata = shown;
  }

  stop_rtc() {
    if (this.id) this.socket.send({ stop: this.id });
    this.id = 0;
    this.peer?.close();
    this.peer = null;
    this.video.srcObject = null;
    this.video.hidden = true;
    this.server_ms = null;
    this.figures = { latency_ms: null, av_ms: null };
  }

  fall_back() {
    if (!this.running) return;
    this.stop_rtc();
    this.start_jpeg();
    this.later(again_ms, () => {
      if (this.mode === 'mjpeg' && !this.forced) {
        this.stop();
        this.start();
      }
    });
  }

  // JPEG.

  start_jpeg() {
    const name = this.path.replace(/^\//, '');
    this.has_stream = jpeg_streams < most_streams;
    this.image.onload = () => {
      if (this.running) this.showing('mjpeg', this.image);
      if (this.running && !this.has_stream) this.later(still_ms, next);
    };
    this.image.onerror = () => {
      if (this.running) this.later(1000, next);
    };
    let number = 0;
    const next = () => {
      if (this.running) this.image.src = `live/${name}.${this.has_stream ? 'mjpeg' : 'jpg'}?${++number}`;
    };
    if (this.has_stream) ++jpeg_streams;
    next();
  }

  stop_jpeg() {
    if (this.has_stream) --jpeg_streams;
    this.has_stream = false;
    this.image.onload = this.image.onerror = null;
    this.image.removeAttribute('src');
    this.image.hidden = true;
  }

  // What is seen.

  showing(mode, element) {
    this.first_picture_ms ??= performance.now() - this.began;
    this.card.dataset.firstPicture = Math.round(this.first_picture_ms);
    this.mode = mode;
    element.hidden = false;
    this.say('');
    this.label();
  }

  say(text) {
    this.veil.textContent = text;
    this.veil.hidden = !text;
  }

  label() {
    const names = { rtc: 'Live, WebRTC', mjpeg: this.has_stream ? 'Live, JPEG' : 'Still pictures' };
    this.way.textContent = names[this.mode] ?? '';
    this.way.hidden = !this.mode;
    this.way.className = `way chip ${this.mode === 'rtc' ? 'good' : 'warn'}`;
    this.card.dataset.way = this.mode;
    this.card.querySelector('.sound').hidden = this.mode !== 'rtc';
  }

  // From the host's send call to this screen: what the publisher says about itself, and what the browser does.
  async measure() {
    if (this.mode !== 'rtc' || !this.peer) return;
    const now = {};
    let rtt_s = 0;
    (await this.peer.getStats()).forEach((report) => {
      if (report.type === 'inbound-rtp') now[report.kind] = report;
      if (report.type === 'candidate-pair' && report.nominated) rtt_s = report.currentRoundTripTime ?? 0;
    });
    const video = now.video;
    const before = this.before ?? {};
    this.before = video;
    if (!video || before.id !== video.id) return;
    const per = (total, count) => {
      const n = video[count] - before[count];
      return n > 0 ? ((video[total] - before[total]) / n) * 1000 : null;
    };
    const held_ms = per('jitterBufferDelay', 'jitterBufferEmittedCount');
    const decode_ms = per('totalDecodeTime', 'framesDecoded');
    if (held_ms !== null && decode_ms !== null && this.server_ms !== null)
      this.figures.latency_ms = this.server_ms + (rtt_s * 1000) / 2 + held_ms + decode_ms;
    const [v, a] = [video.estimatedPlayoutTimestamp, now.audio?.estimatedPlayoutTimestamp];
    this.figures.av_ms = v && a ? v - a : null;
  }
}
