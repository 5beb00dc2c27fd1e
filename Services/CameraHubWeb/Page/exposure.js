import { byId } from './dom.js';
import { askedText, grouped, timeText } from './text.js';

// What the server takes where nothing is said.
const usualUs = 50_000;

function nearestStop(stops, us) {
  const distance = (stop) => Math.abs(Math.log2(stop.us / us));
  return stops.reduce((best, stop, index) => (distance(stop) < distance(stops[best]) ? index : best), 0);
}

/** Stops are no whole microseconds: the server rounds them, and the hub may cut them off. */
function isAsAsked({ asked, exposureUs }) {
  return Math.abs(exposureUs - asked.exposureUs) <= 1;
}

/** The exposure and the settle time to take stills with. Each camera keeps its own exposure. */
export class Exposure extends EventTarget {
  #store;
  #choices = new Map();
  #shownUid = null;

  constructor(store) {
    super();
    this.#store = store;
    byId('stop').addEventListener('input', () => this.#choose({ stop: Number(byId('stop').value) }));
    byId('percent').addEventListener('input', () => this.#choose({ percent: Number(byId('percent').value) }));
    byId('as-time').addEventListener('click', () => this.#choose({ byPercent: false }));
    byId('as-percent').addEventListener('click', () => this.#choose({ byPercent: true }));
    byId('settle').addEventListener('change', () => this.dispatchEvent(new Event('change')));
    store.on('chosen', () => this.#update());
    store.on('stills', () => this.#showForce());
    this.#update();
  }

  /** As the server takes it: {exposure}, {percent}, or {} where the camera has but one. */
  get asked() {
    const camera = this.#store.chosen;
    const choice = this.#choice;
    if (!camera || camera.stops.length === 0) return {};
    return choice.byPercent ? { percent: choice.percent } : { exposure: `${camera.stops[choice.stop].us}us` };
  }

  get settle() {
    const input = byId('settle');
    return `${input.validity.valid && input.value !== '' ? Number(input.value) : 250}ms`;
  }

  get #choice() {
    const camera = this.#store.chosen;
    const key = camera?.uid ?? '';
    const stops = camera?.stops ?? [];
    const choice = this.#choices.get(key) ?? { byPercent: false, percent: 50, stop: nearestStop(stops, usualUs) };
    return { ...choice, stop: Math.min(choice.stop, Math.max(stops.length - 1, 0)) };
  }

  #choose(change) {
    if (!this.#store.chosen) return;
    this.#choices.set(this.#store.chosen.uid, { ...this.#choice, ...change });
    this.#update();
    this.dispatchEvent(new Event('change'));
  }

  #update() {
    const camera = this.#store.chosen;
    const stops = camera?.stops ?? [];
    const choice = this.#choice;
    const isFixed = camera !== null && stops.length === 0;
    byId('stop').max = Math.max(stops.length - 1, 0);
    byId('stop').value = choice.stop;
    byId('percent').value = choice.percent;
    byId('stop').hidden = choice.byPercent || isFixed;
    byId('percent').hidden = !choice.byPercent || isFixed;
    byId('exposure-fixed').hidden = !isFixed;
    for (const id of ['stop', 'percent', 'as-time', 'as-percent']) byId(id).disabled = stops.length === 0;
    byId('as-time').setAttribute('aria-pressed', String(!choice.byPercent));
    byId('as-percent').setAttribute('aria-pressed', String(choice.byPercent));
    this.#showEnds(choice.byPercent, stops);
    this.#showValue(camera, choice);
    if (this.#shownUid !== (camera?.uid ?? null)) {
      this.#shownUid = camera?.uid ?? null;
      this.dispatchEvent(new Event('change'));
    }
    this.#showForce();
  }

  #showEnds(byPercent, stops) {
    byId('shortest').textContent = byPercent && stops.length ? '0 %' : stops.at(0)?.text ?? '';
    byId('longest').textContent = byPercent && stops.length ? '100 %' : stops.at(-1)?.text ?? '';
  }

  #showValue(camera, { byPercent, percent, stop }) {
    const has = camera && camera.stops.length > 0;
    let text = '–';
    let minor = '';
    if (has && byPercent) {
      const us = Math.max((camera.longestExposureUs * percent) / 100, camera.shortestExposureUs);
      text = `${percent} %`;
      minor = `about ${timeText(us)}`;
    } else if (has) {
      text = camera.stops[stop].text;
      minor = `${grouped(camera.stops[stop].us)} µs`;
    } else if (camera) {
      text = camera.exposureRange;
    }
    byId('exposure-value').textContent = text;
    byId('exposure-us').textContent = minor;
    byId('stop').setAttribute('aria-valuetext', `${text}, ${minor}`);
    byId('percent').setAttribute('aria-valuetext', `${text}, ${minor}`);
  }

  /** What the camera made of the latest request. */
  #showForce() {
    const camera = this.#store.chosen;
    const still = camera && this.#store.stills.find(({ uid }) => uid === camera.uid);
    const force = byId('in-force');
    if (!still) force.textContent = 'none yet';
    else if (still.exposureText === null) force.textContent = `in force is not known, ${askedText(still, camera)} asked`;
    else if (isAsAsked(still)) force.textContent = `${still.exposureText}, as asked`;
    else force.textContent = `${still.exposureText} in force, ${askedText(still, camera)} asked`;
  }
}
