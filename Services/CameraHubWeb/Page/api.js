/** Why something cannot be had, in words for people. */
export class Problem extends Error {
  constructor({ kind = '', status = 0, title = '', detail = '', advice = '' }) {
    super(detail || title);
    Object.assign(this, { kind, status, title, detail, advice });
  }
}

function serverAway() {
  return new Problem({
    kind: 'server-away',
    title: 'This page has lost its server',
    detail: 'The server of this page does not answer.',
    advice: 'The page goes on by itself once it is back.',
  });
}

async function problemOf(response) {
  const fallback = { title: response.statusText, detail: `The server answered with status ${response.status}.` };
  const value = await response.json().catch(() => ({}));
  const kind = String(value.type ?? '').replace('urn:camera-hub:problem:', '');
  return new Problem({ ...fallback, ...value, status: response.status, kind });
}

/** The response where it is a good one; throws Problem, or AbortError where the signal says so. */
export async function request(path, options = {}) {
  let response;
  try {
    response = await fetch(path, { credentials: 'same-origin', ...options });
  } catch (error) {
    throw error.name === 'AbortError' ? error : serverAway();
  }
  if (response.status === 401) location.assign('/login');
  if (!response.ok) throw await problemOf(response);
  return response;
}

/** What the body is, as "json" or "blob"; throws as request does. */
async function bodyOf(path, options, kind) {
  const response = await request(path, options);
  try {
    return await response[kind]();
  } catch (error) {
    throw error.name === 'AbortError' ? error : serverAway();
  }
}

export function fetchCameras() {
  return bodyOf('/api/cameras', {}, 'json');
}

export async function fetchStills() {
  return (await bodyOf('/api/stills', {}, 'json')).stills;
}

/** `exposure` is {exposure: "15625us"}, {percent: 40}, or {}. */
export function takeStill(uid, { exposure, settle, ticket, signal }) {
  return bodyOf(`/api/cameras/${encodeURIComponent(uid)}/stills`, {
    method: 'POST',
    headers: { 'Content-Type': 'application/json' },
    body: JSON.stringify({ ...exposure, settle, ticket }),
    signal,
  }, 'json');
}

export function fetchBlob(path, signal) {
  return bodyOf(path, { signal }, 'blob');
}

export function thumbnail(still, width = 320) {
  return `${still.jpeg}?width=${width}`;
}

export function streamAddress(uid, { fps, width, exposure, settle }) {
  const query = new URLSearchParams({ fps, ...exposure, settle });
  if (width) query.set('width', width);
  return `/cameras/${encodeURIComponent(uid)}/stream.mjpg?${query}`;
}

export function newTicket() {
  // randomUUID is only there where the page came encrypted.
  return [...crypto.getRandomValues(new Uint8Array(16))].map((byte) => byte.toString(16).padStart(2, '0')).join('');
}
