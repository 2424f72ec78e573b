// picture.mjs FILE: a picture of the page with a test pattern and two receivers, for the documentation.
import { spawn } from 'node:child_process';
import { end_all, start_browser, start_pattern, start_publisher } from './programs.mjs';

const [, , file] = process.argv;
const publisher = await start_publisher();
start_pattern('--pattern', 'bars', '--size', '1920x1080', '--rate', '29.97');
const browser = await start_browser();
const page = await browser.newPage({ viewport: { width: 1400, height: 900 } });
await page.goto(publisher.url);
await page.waitForSelector('.source[data-way="rtc"]', { timeout: 20000 });
const { sources } = await (await fetch(`${publisher.url}status.json`)).json();
const receivers = ['', '/raw'].map((mount) =>
  spawn('ffmpeg', ['-loglevel', 'error', '-rtsp_transport', 'tcp', '-i', sources[0].url + mount, '-f', 'null', '-'], { stdio: 'ignore' }));
await page.waitForFunction(() => document.querySelectorAll('tbody tr').length === 3, null, { timeout: 20000 });
await page.waitForFunction(() => /\d+ ms/.test(document.querySelector('.latency').textContent));
// Until nothing of the start is in the figures any more, at the flash and its beep.
await page.waitForFunction(() => !document.querySelector('.losses .fresh'), null, { timeout: 60000 });
await page.screenshot({ path: file, fullPage: true });
for (const one of receivers) one.kill();
await browser.close();
await end_all();
