import { newTicket, takeStill } from './api.js';
import { byId } from './dom.js';
import { clearError } from './messages.js';
import { countText, secondsText } from './text.js';

function waitingText(entry) {
  switch (entry?.state) {
    case 'waiting': return `In the queue: ${countText(entry.place, 'still comes', 'stills come')} before it`;
    case 'opening': return 'Opening the camera: its automatic controls settle, two seconds';
    case 'taking': return 'Taking the still';
    case 'fetching': return 'Fetching the picture';
    default: return 'Asking the hub';
  }
}

/** Takes stills one after another, and says what is being waited for. One job at a time. */
export class Taking {
  #store;
  #ticket = null;
  #since = 0;
  #said = '';
  #clock = 0;

  constructor(store) {
    this.#store = store;
    byId('cancel').addEventListener('click', () => store.job?.abort.abort());
    store.on('queue', () => this.#showStep());
  }

  /**
   * Runs work({take, say, signal}) as the page's one job, unless there is one. `take` takes one still; `say` tells how
   * far the job is: a text and, where there are several stills, {done, of}.
   */
  async run(kind, uid, work) {
    if (this.#store.job) return;
    const abort = new AbortController();
    clearError();
    this.#begin();
    this.#store.set('job', { kind, uid, abort });
    try {
      await work({
        signal: abort.signal,
        say: (text, steps) => this.#say(text, steps),
        take: (asked) => this.#take(uid, asked, abort.signal),
      });
    } finally {
      const hasFocus = document.activeElement === byId('cancel');
      this.#end();
      this.#store.set('job', null);
      if (hasFocus) byId('take').focus();
    }
  }

  async #take(uid, { exposure, settle }, signal) {
    this.#ticket = newTicket();
    this.#since = performance.now();
    this.#showStep();
    try {
      const still = await takeStill(uid, { exposure, settle, ticket: this.#ticket, signal });
      this.#store.addStill(still);
      return still;
    } finally {
      this.#ticket = null;
    }
  }

  #begin() {
    this.#since = performance.now();
    this.#said = '';
    byId('progress-bar').hidden = true;
    byId('progress').hidden = false;
    this.#clock = setInterval(() => this.#showTime(), 100);
    this.#showTime();
  }

  #end() {
    clearInterval(this.#clock);
    byId('progress').hidden = true;
    byId('progress-text').textContent = '';
  }

  #say(text, steps) {
    this.#said = text;
    this.#since = performance.now();
    const bar = byId('progress-bar');
    bar.hidden = !steps;
    if (steps) Object.assign(bar, { max: steps.of, value: steps.done });
    this.#showStep();
  }

  #showStep() {
    if (!this.#store.job) return;
    const entry = this.#ticket && this.#store.queue.find(({ ticket }) => ticket === this.#ticket);
    const step = this.#ticket ? waitingText(entry) : '';
    const text = [this.#said, step].filter(Boolean).join(' · ');
    if (byId('progress-text').textContent !== text) byId('progress-text').textContent = text;
  }

  #showTime() {
    byId('progress-time').textContent = secondsText(performance.now() - this.#since);
  }
}
