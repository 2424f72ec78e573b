// The programs of a test: a publisher in a folder of its own on free ports, hosts, and a browser.
import { spawn } from 'node:child_process';
import { mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { chromium } from 'playwright-core';

const folder = mkdtempSync(join(tmpdir(), 'quillo-page-'));
const env = { ...process.env, QUILLO_RUNTIME_DIR: folder, QUILLO_PUBLISHER: '' };
const running = new Set();

function start(program, ...parameters) {
  const child = spawn(program, parameters, { env, stdio: ['pipe', 'ignore', 'pipe'] });
  running.add(child);
  child.on('exit', () => running.delete(child));
  child.lines = '';
  child.stderr.on('data', (data) => {
    child.lines += data;
    child.emit('line');
  });
  return child;
}

function until(child, pattern, limit_ms = 15000) {
  return new Promise((resolve, reject) => {
    const look = () => {
      const found = child.lines.match(pattern);
      if (found) resolve(found);
      return found;
    };
    if (look()) return;
    child.on('line', look);
    child.on('exit', () => reject(new Error(`it ended:\n${child.lines}`)));
    setTimeout(() => reject(new Error(`no ${pattern} in:\n${child.lines}`)), limit_ms).unref();
  });
}

export async function start_publisher(page_port = '0') {
  const child = start(process.env.QUILLO_PROGRAM, 'serve', '--port', '0', '--page', page_port, '--bind', '127.0.0.1');
  const [, url] = await until(child, /the page is at (\S+)/);
  return { url, pid: child.pid, log: () => child.lines, end: () => end(child) };
}

export function start_host(name, width = 1280, height = 720, rate = 30) {
  const child = start(process.env.QUILLO_TEST_HOST, name, width, height, rate);
  return { end: () => end(child) };
}

export function start_pattern(...parameters) {
  return start(process.env.QUILLO_PROGRAM, 'play', ...parameters);
}

function end(child) {
  return new Promise((resolve) => {
    if (!running.has(child)) return resolve();
    child.on('exit', resolve);
    child.stdin.end();
    if (child.spawnargs[0] === process.env.QUILLO_PROGRAM) child.kill('SIGTERM');
  });
}

export async function start_browser() {
  // No sandbox: tests run as root in containers too.
  return chromium.launch({
    executablePath: process.env.QUILLO_CHROMIUM ?? '/usr/bin/chromium',
    args: ['--no-sandbox', '--disable-dev-shm-usage', '--autoplay-policy=no-user-gesture-required'],
  });
}

export async function end_all() {
  await Promise.all([...running].map(end));
  rmSync(folder, { recursive: true, force: true });
}
