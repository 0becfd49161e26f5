// Runs Cloudflare's own speed-test engine (@cloudflare/speedtest, the reference Tarvik's speed
// test is compared with) under Node against the benchmark's local server, and prints its summary
// as one line of JSON.
//
// usage: node cloudflare_reference.mjs MODULE_DIR BASE_URL DOWN_BPS UP_BPS SECONDS
//   MODULE_DIR  the folder npm installed @cloudflare/speedtest into
//   BASE_URL    the local server, e.g. http://10.77.0.2:8080/
//   DOWN_BPS, UP_BPS  the link's rates, used only to size the list of requests so that each
//               direction runs for about SECONDS, as Tarvik's does
//
// The engine is written for a browser. Node 20 has fetch and records resource timings, so the
// shims are few:
// - window.location.origin, which the engine resolves its URLs against;
// - the resource-timing entry of a request appears a moment after its body has been read, while
//   the engine looks it up at once: the body read waits until the entry is there;
// - Node leaves nextHopProtocol unset, which the engine parses: it is reported as http/1.1,
//   which is what Node's fetch speaks;
// - the engine logs every request on the console: that is silenced, so stdout carries only the
//   result.
import { pathToFileURL } from 'node:url';
import path from 'node:path';

const [moduleDir, baseUrl, downArg, upArg, secondsArg] = process.argv.slice(2);
if (!moduleDir || !baseUrl || !downArg || !upArg || !secondsArg) {
  console.error('usage: node cloudflare_reference.mjs MODULE_DIR BASE_URL DOWN_BPS UP_BPS SECONDS');
  process.exit(2);
}
const downBps = Number(downArg);
const upBps = Number(upArg);
const seconds = Number(secondsArg);

globalThis.window = { location: { origin: new URL(baseUrl).origin } };

const nodeFetch = globalThis.fetch;
const entryFor = (url) => performance.getEntriesByName(url, 'resource').length > 0;
globalThis.fetch = async (input, init) => {
  const response = await nodeFetch(input, init);
  const url = typeof input === 'string' ? input : input.url;
  const readText = response.text.bind(response);
  response.text = async () => {
    const body = await readText();
    for (let i = 0; i < 1000 && !entryFor(url); i++) {
      await new Promise((resolve) => setImmediate(resolve));
    }
    return body;
  };
  return response;
};
const getEntriesByName = performance.getEntriesByName.bind(performance);
performance.getEntriesByName = (name, type) =>
  getEntriesByName(name, type).map((e) =>
    e.nextHopProtocol === undefined ? Object.assign(e.toJSON(), { nextHopProtocol: 'http/1.1' }) : e);

const log = console.log;
console.log = () => {};
console.warn = () => {};

// Cloudflare's own ramp of request sizes and counts (the engine's default list), kept below the
// 100 MB the service refuses, cut or extended with the largest size so that the requests of a
// direction take about `seconds` at the link's rate.
function plan(type, ladder, bps) {
  const out = [];
  let left = seconds;
  for (const [i, [bytes, count]] of ladder.entries()) {
    if (left <= 0) break;
    const each = (8 * bytes) / bps;
    const fits = Math.max(1, Math.round(left / each));
    const n = i === ladder.length - 1 ? fits : Math.min(count, fits);
    out.push({ type, bytes, count: n });
    left -= n * each;
  }
  return out;
}
const measurements = [
  { type: 'latency', numPackets: 1 },
  { type: 'download', bytes: 1e5, count: 1, bypassMinDuration: true },
  { type: 'latency', numPackets: 20 },
  ...plan('download', [[1e5, 9], [1e6, 8], [1e7, 6], [25e6, 4]], downBps),
  ...plan('upload', [[1e5, 8], [1e6, 6], [1e7, 4], [25e6, 4], [5e7, 3]], upBps),
];

const module = path.join(moduleDir, 'node_modules/@cloudflare/speedtest/dist/speedtest.js');
const { default: SpeedTest } = await import(pathToFileURL(module).href);
const base = baseUrl.endsWith('/') ? baseUrl : `${baseUrl}/`;
const started = performance.now();
const engine = new SpeedTest({
  downloadApiUrl: `${base}__down`,
  uploadApiUrl: `${base}__up`,
  logAimApiUrl: null,
  logMeasurementApiUrl: null,
  measurements,
  // The list above already decides how long each direction runs.
  bandwidthFinishRequestDuration: Number.MAX_SAFE_INTEGER,
});
engine.onError = (e) => {
  log(JSON.stringify({ error: String(e) }));
  process.exit(1);
};
engine.onFinish = (results) => {
  const s = results.getSummary();
  const points = (list) => list.reduce((sum, p) => sum + p.duration, 0) / 1e3;
  log(JSON.stringify({
    downloadMbps: s.download / 1e6,
    uploadMbps: s.upload / 1e6,
    idleLatency: s.latency,
    jitter: s.jitter,
    // The engine reports 0 when it took no loaded-latency sample at all.
    downloadLatency: results.getDownLoadedLatencyPoints().length ? s.downLoadedLatency : null,
    uploadLatency: results.getUpLoadedLatencyPoints().length ? s.upLoadedLatency : null,
    downloadSeconds: points(results.getDownloadBandwidthPoints()),
    uploadSeconds: points(results.getUploadBandwidthPoints()),
    totalSeconds: (performance.now() - started) / 1e3,
  }));
  process.exit(0);
};
