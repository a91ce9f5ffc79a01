// Joins the parts of the page with the cloud's live stream.
import {$, call, clock, copy, element, fill, focusButton, linkButton, makeSearch, quiet, row} from './dom.js';
import {setUpExchange, showExchange} from './exchange.js';
import {endFaults, readFault, showEndFaults, showFaultFields, showFaults} from './faults.js';
import {setUpRequests, showRequests} from './requests.js';
import {setUpStory, showStory, updateStory} from './story.js';

const kShownSecrets = 8;
let state = {users: [], devices: []};  // the latest

const open = summary => showExchange(summary, state.urls);

function secrets(credentials) {
  const shown = credentials.slice(0, kShownSecrets).map(({kind, short, expires_ms}) =>
      element('span', {}, kind + ' ', element('code', {}, short),
              expires_ms === null ? '' : ' until ' + clock(expires_ms)));
  if (credentials.length > shown.length) {
    shown.push(element('span', {}, 'and ' + (credentials.length - shown.length) + ' more'));
  }
  return element('div', {class: 'secrets'}, ...shown);
}

function userRow({user_id, guid, credentials}) {
  const button = linkButton(user_id, () => showStory(user_id, state, open));
  button.dataset.user = user_id;
  return row([button, quiet(guid)], secrets(credentials));
}

const parts = {
  urls({http, https, api}) {
    const entry = (name, ...list) => element('div', {}, element('dt', {}, name),
        ...list.map(url => element('dd', {}, element('code', {}, url))));
    $('urls').replaceChildren(entry('For gateways', http, https), entry('Page and API', api));
    $('refuse-help').textContent = 'Closes the HTTP and HTTPS ports. The page remains at ' +
        api + '/.';
  },
  users(users) {
    $('user-ids').replaceChildren(...users.map(({user_id}) => element('option', {value: user_id})));
    const focused = document.activeElement.dataset.user;
    fill($('users'), users.map(userRow));
    findUsers();
    parts.devices(state.devices);
    if (focused) focusButton($('users'), 'user', focused);
  },
  devices(devices) {
    const names = new Map(state.users.map(({guid, user_id}) => [guid, user_id]));
    fill($('devices'), devices.map(device =>
        row([device.physical_address, quiet(device.peer_id)],
            device.users.map(guid => names.get(guid) || guid).join(', ') || quiet('none'))));
  },
  faults: () => showFaults(state),
  clock_ahead_seconds(seconds) {
    $('clock').hidden = seconds === 0;
    $('clock').textContent = 'The cloud’s clock is ' + seconds.toLocaleString('en') +
        ' seconds ahead.';
  },
  is_refusing: () => showFaults(state),
};

// Only the parts that differ are rebuilt, so that focus and selection are kept.
let shown = {};
function showState(latest) {
  state = latest;
  for (const [name, show] of Object.entries(parts)) {
    const text = JSON.stringify(state[name]);
    if (shown[name] !== text) show(state[name]);
    shown[name] = text;
  }
  updateStory(state, open);
}

function showChanges(changes) {
  showRequests(changes, open);
  showEndFaults();
  updateStory(state, open);
}

async function submit(event, errorId, action) {
  event.preventDefault();
  $(errorId).textContent = '';
  try {
    await action();
  } catch (error) {
    $(errorId).textContent = error.message;
  }
}

const findUsers = makeSearch($('find-user'), $('users'));
setUpRequests();
setUpExchange();
setUpStory();
$('kind').addEventListener('change', showFaultFields);
$('fault').addEventListener('submit', event =>
    submit(event, 'fault-error', () => call('POST', '/api/faults', readFault())));
$('sign-in').addEventListener('submit', event => submit(event, 'sign-in-error', async () => {
  const user = $('user').value;
  const {code} = await call('POST', '/api/codes', {user});
  $('issued-user').textContent = user;
  $('code').textContent = code;
  $('issued').hidden = false;
}));
$('copy-code').addEventListener('click', () => copy($('code').textContent, $('copy-code')));
$('end-faults').addEventListener('click', () => endFaults('/api/faults'));
$('forget').addEventListener('click', () => call('DELETE', '/api/requests').catch(() => {}));

let source = null;

function showConnection(name, text) {
  $('connection').dataset.state = name;
  $('connection').textContent = text;
}

function connect() {
  if (source) source.close();
  source = new EventSource('/api/events');
  source.addEventListener('open', () => {
    showConnection('live', 'live');
    shown = {};  // the cloud may have been restarted
  });
  source.addEventListener('state', event => showState(JSON.parse(event.data)));
  source.addEventListener('requests', event => showChanges(JSON.parse(event.data)));
  source.addEventListener('error', () => {
    showConnection('lost', 'not connected, trying again');
    if (source.readyState === EventSource.CLOSED) setTimeout(() => document.hidden || connect(), 2000);
  });
}

// Browsers allow six connections to a server, so hidden pages close theirs.
document.addEventListener('visibilitychange', () => {
  if (!document.hidden) return connect();
  source.close();
  showConnection('waiting', 'paused');
});

showFaultFields();
fill($('users'), []);
fill($('devices'), []);
showChanges({from_start: true, oldest: 0, requests: []});
connect();
