import { byId } from './dom.js';
import { showError } from './messages.js';
import { beginSeries } from './series.js';
import { countText } from './text.js';

/** Waits, also where a page that is not seen has its own clocks slowed down: those of workers are not. */
function wait(ms, signal) {
  return new Promise((resolve, reject) => {
    signal.throwIfAborted();
    const clock = new Worker('/page/clock.js');
    const end = (settle) => () => {
      clock.terminate();
      settle();
    };
    clock.onmessage = end(resolve);
    clock.onerror = end(() => reject(new Error('The clock does not run.')));
    signal.addEventListener('abort', end(() => reject(signal.reason)), { once: true });
    clock.postMessage(ms);
  });
}

/** So many stills, one every so many seconds, from the beginning of one to that of the next. */
export class Timelapse {
  #store;
  onChange = () => {};

  constructor(store) {
    this.#store = store;
    for (const id of ['lapse-every', 'lapse-count']) byId(id).addEventListener('input', () => this.onChange());
  }

  /** Null where what was typed is none. */
  get plan() {
    const [every, count] = [byId('lapse-every'), byId('lapse-count')];
    const isValid = [every, count].every((input) => input.value !== '' && input.validity.valid);
    return isValid ? { every: Number(every.value) * 1000, count: Number(count.value) } : null;
  }

  get label() {
    const { plan } = this;
    return plan ? `Start: ${countText(plan.count, 'still', 'stills')}` : 'Start';
  }

  run(taking, asked) {
    const { plan } = this;
    const camera = this.#store.chosen;
    if (!camera || !plan) return Promise.resolve();
    return taking.run('timelapse', camera.uid, async ({ take, say, signal }) => {
      const series = beginSeries(this.#store, 'timelapse', camera);
      const begin = performance.now();
      for (let number = 1; number <= plan.count && !series.isFull; ++number) {
        const steps = { done: number - 1, of: plan.count };
        const rest = begin + (number - 1) * plan.every - performance.now();
        if (rest > 0) {
          say(`${number - 1} of ${plan.count} taken, waiting for the next`, steps);
          await wait(rest, signal);
        }
        say(`Still ${number} of ${plan.count}`, steps);
        await this.#takeOne(series, () => take(asked), signal);
      }
    });
  }

  /** One that fails, as while the hub is away, leaves a gap; the others are taken all the same. */
  async #takeOne(series, take, signal) {
    try {
      await series.add(await take(), '', signal);
    } catch (error) {
      if (error.name === 'AbortError') throw error;
      ++series.failures;
      showError(error);
    }
    this.#store.set('series', series);
  }
}
