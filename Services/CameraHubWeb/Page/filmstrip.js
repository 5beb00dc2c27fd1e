import { fetchStills, thumbnail } from './api.js';
import { byId, fitList, make } from './dom.js';
import { showError } from './messages.js';
import { clockText, shortExposure } from './text.js';

const refreshDelay = 500;

function nameOf(still) {
  return `${still.camera}, ${shortExposure(still)}, ${clockText(new Date(still.takenAt))}`;
}

function buildFrame(store, still) {
  const image = make('img', { alt: '', src: thumbnail(still, 240), loading: 'lazy' });
  const view = make('button', { type: 'button', class: 'frame', title: nameOf(still) },
    image, make('span', {}, shortExposure(still)));
  view.setAttribute('aria-label', nameOf(still));
  view.addEventListener('click', () => showStill(store, still));
  const mark = make('button', { type: 'button', class: 'mark', title: 'Compare with another still' });
  mark.addEventListener('click', () => toggleMark(store, still));
  return make('li', {}, view, mark);
}

function updateFrame(store, item, still) {
  const [view, mark] = item.children;
  const place = store.marked.findIndex(({ id }) => id === still.id);
  view.setAttribute('aria-current', String(store.mode === 'still' && store.shown?.id === still.id));
  mark.setAttribute('aria-pressed', String(place >= 0));
  mark.textContent = place < 0 ? '' : 'AB'[place];
  mark.setAttribute('aria-label', `${mark.textContent} Compare ${nameOf(still)}`.trim());
}

export function showStill(store, still) {
  store.set('shown', still);
  store.set('mode', 'still');
}

/** A third one takes the place of the one that was marked last. */
function toggleMark(store, still) {
  const others = store.marked.filter(({ id }) => id !== still.id);
  const isNew = others.length === store.marked.length;
  store.set('marked', isNew ? [...others.slice(0, 1), still] : others);
  if (store.marked.length === 2) store.set('mode', 'compare');
  else if (store.mode === 'compare') store.set('mode', store.shown ? 'still' : 'none');
}

/** The one beside the one that is shown: -1 newer, 1 older. */
export function showNeighbour(store, direction) {
  const at = store.stills.findIndex(({ id }) => id === store.shown?.id);
  const still = store.stills[at < 0 ? 0 : at + direction];
  if (!still) return;
  showStill(store, still);
  const frame = byId('strip').querySelector(`[data-key="${still.id}"]`);
  frame?.scrollIntoView({ block: 'nearest', inline: 'nearest' });
}

/** The latest stills, to look at and to compare. */
export class Filmstrip {
  #store;
  #timer = 0;

  constructor(store) {
    this.#store = store;
    store.on('stills shown marked mode', () => this.#update());
    this.#update();
  }

  async refresh() {
    try {
      this.#store.set('stills', await fetchStills());
    } catch (error) {
      if (error.kind !== 'server-away') showError(error);
    }
  }

  /** A new one may have pushed an old one out. */
  refreshSoon() {
    clearTimeout(this.#timer);
    this.#timer = setTimeout(() => this.refresh(), refreshDelay);
  }

  #update() {
    const store = this.#store;
    byId('no-stills').hidden = store.stills.length > 0;
    byId('strip').hidden = store.stills.length === 0;
    fitList(byId('strip'), store.stills, {
      keyOf: ({ id }) => id,
      build: (still) => buildFrame(store, still),
      update: (item, still) => updateFrame(store, item, still),
    });
  }
}
