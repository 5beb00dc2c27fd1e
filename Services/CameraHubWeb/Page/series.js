import { fetchBlob, thumbnail } from './api.js';
import { byId, fitList, make } from './dom.js';
import { showStill } from './filmstrip.js';
import { bytesText, clockText, countText, shortExposure } from './text.js';
import { crc32, largestZip, save, zipOf } from './zip.js';

/** Stills of one purpose. It has the files themselves: the server keeps only the latest ones. */
export class Series {
  items = [];
  bytes = 0;
  failures = 0;

  constructor({ kind, camera }) {
    this.kind = kind;
    this.camera = camera;
  }

  /** Fetches its files; `suffix` goes in front of ".png" in its name. Throws as api.request does. */
  async add(still, suffix, signal) {
    const blob = await fetchBlob(still.png, signal);
    const small = await fetchBlob(thumbnail(still), signal);
    const crc = crc32(new Uint8Array(await blob.arrayBuffer()));
    const name = still.fileName.replace(/(\.png)?$/, `${suffix}.png`);
    this.items.push({ still, blob, crc, name, date: new Date(still.takenAt), small: URL.createObjectURL(small) });
    this.bytes += blob.size;
  }

  get isFull() {
    return this.bytes > largestZip;
  }

  get fileName() {
    return `${this.items[0].still.fileName.replace(/\.png$/, '')}_${this.kind}.zip`;
  }

  zip() {
    return zipOf(this.items);
  }

  drop() {
    for (const { small } of this.items) URL.revokeObjectURL(small);
  }
}

function title(series) {
  const kinds = { bracket: 'Bracket', timelapse: 'Time-lapse' };
  const parts = [`${kinds[series.kind]} of ${series.camera}`, countText(series.items.length, 'still', 'stills'),
    bytesText(series.bytes)];
  if (series.failures) parts.push(`${series.failures} failed`);
  return parts.join(' · ');
}

function buildCell(store, { still, small }) {
  const button = make('button', { type: 'button', class: 'cell' },
    make('img', { alt: '', src: small }),
    make('strong', {}, shortExposure(still)),
    make('span', { class: 'minor' }, clockText(new Date(still.takenAt))));
  button.addEventListener('click', () => showStill(store, still));
  return make('li', {}, button);
}

/** The contact sheet of the latest series. */
export function showSeries(store) {
  byId('zip').addEventListener('click', () => {
    if (store.series?.items.length) save(store.series.zip(), store.series.fileName);
  });
  store.on('series', () => {
    const { series } = store;
    byId('series-title').textContent = title(series);
    byId('zip').disabled = series.items.length === 0;
    fitList(byId('series'), series.items, {
      keyOf: ({ still }) => still.id,
      build: (item) => buildCell(store, item),
      update: () => {},
    });
  });
}

/** Begins a new series in the place of the one before, and shows it. */
export function beginSeries(store, kind, camera) {
  store.series?.drop();
  store.set('series', new Series({ kind, camera: camera.name }));
  store.set('mode', 'series');
  return store.series;
}
