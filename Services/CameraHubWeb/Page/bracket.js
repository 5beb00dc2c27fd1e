import { byId, make } from './dom.js';
import { beginSeries } from './series.js';
import { countText } from './text.js';

// At first two stops to both sides of the usual exposure.
const usual = [15_625, 250_000];

/** One still a stop, from one exposure to another. */
export class Bracket {
  #store;
  #uid = null;
  onChange = () => {};

  constructor(store) {
    this.#store = store;
    for (const id of ['bracket-from', 'bracket-to']) byId(id).addEventListener('change', () => this.onChange());
    store.on('chosen', () => this.#fill());
  }

  /** Ascending. */
  get stops() {
    const ends = [Number(byId('bracket-from').value), Number(byId('bracket-to').value)].sort((a, b) => a - b);
    return (this.#store.chosen?.stops ?? []).filter(({ us }) => us >= ends[0] && us <= ends[1]);
  }

  get label() {
    return this.#store.chosen?.stops.length === 0 ? 'The exposure is fixed'
      : `Take ${countText(this.stops.length, 'still', 'stills')}`;
  }

  #fill() {
    const camera = this.#store.chosen;
    if (!camera || camera.uid === this.#uid) return;
    this.#uid = camera.uid;
    ['bracket-from', 'bracket-to'].forEach((id, index) => {
      const options = camera.stops.map(({ us, text }) => make('option', { value: String(us) }, text));
      byId(id).replaceChildren(...options);
      const at = camera.stops.findIndex(({ us }) => us >= usual[index]);
      byId(id).selectedIndex = at < 0 ? camera.stops.length - 1 : at;
    });
    this.onChange();
  }

  run(taking, settle) {
    const { stops } = this;
    const camera = this.#store.chosen;
    if (!camera || stops.length === 0) return Promise.resolve();
    return taking.run('bracket', camera.uid, async ({ take, say, signal }) => {
      const series = beginSeries(this.#store, 'bracket', camera);
      for (const [index, stop] of stops.entries()) {
        say(`Still ${index + 1} of ${stops.length}, ${stop.text}`, { done: index, of: stops.length });
        const still = await take({ exposure: { exposure: `${stop.us}us` }, settle });
        const number = String(index + 1).padStart(2, '0');
        await series.add(still, `_${number}_${still.exposureUs ?? stop.us}us`, signal);
        this.#store.set('series', series);
      }
    });
  }
}
