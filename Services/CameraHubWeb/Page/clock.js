// A worker: tells when so many milliseconds are over.
onmessage = ({ data }) => {
  setTimeout(() => postMessage('over'), data);
};
