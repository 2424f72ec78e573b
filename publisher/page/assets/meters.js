// Sound levels as bars: peak with a slow fall, average inside, a mark for the highest of the last seconds.

const bottom_db = -60;
const fall_db_s = 20;
const hold_ms = 1500;
const silent_after_ms = 400; // without word of any sound

const height_of = (db) => Math.max(0, Math.min(1, 1 - db / bottom_db));

export class Meters {
  constructor(canvas) {
    this.canvas = canvas;
    this.channels = [];
    this.at = 0;
    this.frame = null;
  }

  // [[peak dB, average dB] of each channel]
  take(levels) {
    const now = performance.now();
    this.channels.length = levels.length;
    levels.forEach(([peak, average], k) => {
      const was = this.channels[k] ?? { peak: bottom_db, average: bottom_db, held: bottom_db, held_at: 0 };
      if (peak >= was.held || now - was.held_at > hold_ms) Object.assign(was, { held: peak, held_at: now });
      this.channels[k] = Object.assign(was, { peak: Math.max(peak, was.peak), average });
    });
    this.told_at = now;
    this.frame ??= requestAnimationFrame((time) => this.draw(time));
  }

  clear() {
    this.channels = [];
    this.frame ??= requestAnimationFrame((time) => this.draw(time));
  }

  draw(time) {
    const scale = devicePixelRatio || 1;
    const { clientWidth, clientHeight } = this.canvas;
    const [width, height] = [Math.round(clientWidth * scale), Math.round(clientHeight * scale)];
    if (this.canvas.width !== width || this.canvas.height !== height) Object.assign(this.canvas, { width, height });
    const to = this.canvas.getContext('2d');
    to.clearRect(0, 0, width, height);

    const seconds = Math.min(0.1, (time - this.at) / 1000);
    this.at = time;
    const count = Math.max(this.channels.length, 2);
    const gap = Math.max(1, Math.round((count > 8 ? 1 : 3) * scale));
    const bar = (width - gap * (count - 1)) / count;
    let moving = false;
    for (let k = 0; k < count; ++k) {
      const x = Math.round(k * (bar + gap));
      const w = Math.max(1, Math.round(bar));
      to.fillStyle = '#171c22';
      to.fillRect(x, 0, w, height);
      const channel = this.channels[k];
      if (!channel) continue;
      const zone = (from_db, to_db, level, bright, dark) => {
        const low = height_of(from_db);
        for (const [db, color] of [[channel.peak, dark], [channel.average, bright]]) {
          const high = Math.min(height_of(to_db), height_of(db));
          if (high <= low) continue;
          to.fillStyle = color;
          to.fillRect(x, Math.round((1 - high) * height), w, Math.ceil((high - low) * height));
        }
      };
      zone(bottom_db, -18, 0, '#49b89b', '#2b6d5d');
      zone(-18, -6, 0, '#d9a441', '#836428');
      zone(-6, 0, 0, '#f0655a', '#8c3d37');
      if (channel.held > bottom_db) {
        to.fillStyle = channel.held > -1 ? '#ff7a70' : '#cfd8e3';
        to.fillRect(x, Math.round((1 - height_of(channel.held)) * (height - 2 * scale)), w, Math.round(2 * scale));
      }
      if (time - this.told_at > silent_after_ms) channel.average = bottom_db;
      channel.peak = Math.max(bottom_db, channel.peak - fall_db_s * seconds);
      moving ||= channel.peak > bottom_db;
    }
    this.frame = moving ? requestAnimationFrame((next) => this.draw(next)) : null;
  }
}
