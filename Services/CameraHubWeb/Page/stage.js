import { byId } from './dom.js';
import { showError } from './messages.js';
import { loadPicture } from './picture.js';
import { askedText, clockText, shortExposure } from './text.js';

function hint(store) {
  if (store.mode === 'none') return '';
  if (store.mode === 'live') return store.chosen?.name ?? '';
  const still = store.shown;
  return still ? `${still.camera} · ${shortExposure(still)} · ${clockText(new Date(still.takenAt))}` : '';
}

function emptyText(store) {
  if (store.chosen) return 'Take a still, or start the live view.';
  if (store.chosenUid) return 'The camera has gone. It goes on here once it is back.';
  return 'Choose a camera.';
}

/** What the room for the picture is used for: the modes of the store. */
export class Stage {
  #store;
  #view;
  #wanted = 0;
  onPicture = () => {};

  constructor(store, view) {
    this.#store = store;
    this.#view = view;
    for (const button of document.querySelectorAll('button[data-mode]')) {
      button.addEventListener('click', () => store.set('mode', button.dataset.mode));
    }
    store.on('mode shown marked chosen cameras series server hub job', () => this.#update());
    store.on('mode shown marked', () => this.#show());
    this.#update();
  }

  #update() {
    const { mode, shown, marked, series, isReady } = this.#store;
    byId('stage').dataset.showing = mode;
    for (const element of document.querySelectorAll('[data-for]')) {
      element.hidden = !element.dataset.for.split(' ').includes(mode);
    }
    const possible = { still: shown !== null, compare: marked.length === 2, series: Boolean(series) };
    for (const button of document.querySelectorAll('button[data-mode]')) {
      button.disabled = !possible[button.dataset.mode];
      button.setAttribute('aria-pressed', String(button.dataset.mode === mode));
    }
    byId('live').disabled = mode !== 'live' && !isReady;
    byId('live').setAttribute('aria-pressed', String(mode === 'live'));
    byId('none-text').textContent = emptyText(this.#store);
    byId('caption').textContent = hint(this.#store);
  }

  /** Only the latest wish counts: pictures may come in another order than they were asked for. */
  async #show() {
    const { mode, shown, marked } = this.#store;
    const stills = mode === 'compare' ? marked : mode === 'still' && shown ? [shown] : [];
    if (stills.length === 0) return;
    const number = ++this.#wanted;
    byId('loading').hidden = false;
    try {
      const [picture, other] = await Promise.all(stills.map(loadPicture));
      if (number !== this.#wanted) return;
      this.#view.show(picture, other ?? null);
      if (other) this.#nameSides(picture, other);
      else this.onPicture(picture);
    } catch (error) {
      if (number === this.#wanted) showError(error);
    } finally {
      if (number === this.#wanted) byId('loading').hidden = true;
    }
  }

  #nameSides(...pictures) {
    const name = ({ still }) => {
      const exposure = still.exposureText === null ? askedText(still, this.#store.camera(still.uid))
        : shortExposure(still);
      return `${exposure} · ${clockText(new Date(still.takenAt))}`;
    };
    byId('compare-a').textContent = name(pictures[0]);
    byId('compare-b').textContent = name(pictures[1]);
  }
}
