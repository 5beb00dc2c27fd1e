// Scripts cannot see the session's cookie: the login page leaves word of it.
const name = 'camera-hub-session';

export function beginSession() {
  localStorage.setItem(name, 'yes');
}

export function endSession() {
  localStorage.removeItem(name);
}

export function hasSession() {
  return localStorage.getItem(name) !== null;
}
