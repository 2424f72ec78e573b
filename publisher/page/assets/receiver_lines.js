// What to type or to enter, for each kind of receiver.

const quoted = (url) => (/^[\w:/.@%+~-]+$/.test(url) ? url : `"${url}"`);

// [kind, [[label, text]], note]
export function receiver_lines(source, page) {
  const all = source.url;
  const raw = `${all}/raw`;
  // Alpha has addresses of its own, and is worth a line only where there is some.
  const keyed = (lines) => (source.format?.alpha ? lines : []);
  const jpeg = new URL(`live/${source.path.replace(/^\//, '')}.mjpeg`, page).href;
  return [
    ['ffplay', [
      ['H.264 and Opus, for every network', `ffplay -fflags nobuffer -flags low_delay -rtsp_transport tcp ${quoted(all)}`],
      ['Uncompressed, for 10 GbE or this machine', `ffplay -rtsp_transport tcp ${quoted(raw)}`],
      ...keyed([['Fill and key, as two pictures', `ffplay -rtsp_transport tcp ${quoted(`${all}/raw+key`)}`]]),
    ], 'ffmpeg takes the same addresses behind -i.'],
    ['VLC', [
      ['Media, Open Network Stream', all],
      ['On this machine, for builds without RTSP (Debian)', jpeg],
    ], 'VLC lists the source under Local Network too. It has no uncompressed 4:2:2.'],
    ['GStreamer', [
      ['H.264 and Opus', `gst-play-1.0 ${quoted(all)}`],
      ['Uncompressed, every format', `gst-play-1.0 ${quoted(raw)}`],
      ...keyed([['With alpha, in one picture', `gst-play-1.0 ${quoted(`${all}/bgra`)}`]]),
      ['In a pipeline', `gst-launch-1.0 rtspsrc location=${quoted(raw)} protocols=tcp latency=0 ! rtpvrawdepay ! videoconvert ! autovideosink`],
    ], ''],
    ['OBS', [
      ['Media Source, without “Local File”, Input', all],
      ['The same, uncompressed', raw],
      ['FFmpeg Options', 'rtsp_transport=tcp'],
    ], 'Take “Network Buffering” down to 0 MB and tick “Restart playback when source becomes active”.'],
    ['Browser', [['This picture alone, on this machine', jpeg]], ''],
  ];
}
