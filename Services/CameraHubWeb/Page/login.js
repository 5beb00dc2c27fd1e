import { endSession, beginSession } from './session.js';

endSession();
if (location.search === '?wrong') {
  const token = document.getElementById('token');
  document.getElementById('wrong').textContent = 'That is not the token. Try it again.';
  token.setAttribute('aria-invalid', 'true');
}
document.getElementById('login').addEventListener('submit', beginSession);
