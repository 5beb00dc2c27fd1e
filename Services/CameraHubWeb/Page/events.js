import { request } from './api.js';

// The server sends something every 15 seconds.
const silence = 40_000;
const pause = 1_000;

/** Calls `take` with the name and data of each event of a text/event-stream, and `alive` with every piece of it. */
async function readEvents(body, take, alive) {
  const reader = body.pipeThrough(new TextDecoderStream()).getReader();
  let text = '';
  for (;;) {
    const { done, value } = await reader.read();
    if (done) return;
    alive();
    const blocks = (text + value).split(/\r?\n\r?\n/);
    text = blocks.pop();
    for (const block of blocks) {
      const event = parseEvent(block);
      if (event.data) take(event.name, JSON.parse(event.data));
    }
  }
}

function parseEvent(block) {
  const event = { name: 'message', data: '' };
  for (const line of block.split(/\r?\n/)) {
    const [, field, value] = /^([^:]*):? ?(.*)$/.exec(line);
    if (field === 'event') event.name = value;
    else if (field === 'data') event.data += value;
  }
  return event;
}

/** Ends with the server's part of the connection, and with the signal. */
async function followOnce(abort, { take, connected }) {
  let timer;
  const alive = () => {
    clearTimeout(timer);
    timer = setTimeout(() => abort.abort(), silence);
  };
  try {
    alive();
    const response = await request('/api/events', { signal: abort.signal, cache: 'no-store' });
    connected(true);
    await readEvents(response.body, take, alive);
  } catch {
    // Whatever it was: the server is lost.
  } finally {
    clearTimeout(timer);
  }
}

async function whenSeen() {
  while (document.hidden) {
    await new Promise((resolve) => { document.addEventListener('visibilitychange', resolve, { once: true }); });
  }
}

/**
 * Follows /api/events for as long as the page is there. `take` gets the name and the value of each event, `connected`
 * true whenever the server has been reached and false once it is lost, which silence is too: of a network that was cut,
 * nothing else tells.
 * A page that is not seen lets go of it, since browsers have few connections to a server, for all pages together and
 * for those that were left too; the first events and the list of stills make up for what it has missed.
 */
export async function followEvents(listener) {
  for (;;) {
    await whenSeen();
    const abort = new AbortController();
    let isLeft = false;
    const leave = () => {
      isLeft = true;
      abort.abort();
    };
    document.addEventListener('visibilitychange', leave, { once: true });
    await followOnce(abort, listener);
    document.removeEventListener('visibilitychange', leave);
    if (isLeft) continue;
    listener.connected(false);
    await new Promise((resolve) => { setTimeout(resolve, pause); });
  }
}
