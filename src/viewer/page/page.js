// The page's life: the live picture while the unit sends one, the folders while the card is there.
'use strict';

const kLookMs = 1000; // how often the unit is asked how it is
const kFoldersMs = 10000; // how often for new folders
const kPatience = 2; // looks without a picture before the sign comes

const byId = (id) => document.getElementById(id);
const live = byId('live');
const picture = byId('stream');
const findings = byId('findings');

// An address made of names, each with whatever letters it has.
const address = (room, ...names) => [room, ...names.flatMap((name) => name.split('/')).map(encodeURIComponent)].join('/');

function make(tag, properties, ...children) {
	const element = Object.assign(document.createElement(tag), properties);
	element.append(...children);
	return element;
}

function symbol(name) {
	const drawing = document.createElementNS('http://www.w3.org/2000/svg', 'svg');
	const use = document.createElementNS('http://www.w3.org/2000/svg', 'use');
	use.setAttribute('href', '#' + name);
	drawing.append(use);
	return drawing;
}

function setAddress(link, to) {
	if (to)
		link.href = to;
	else
		link.removeAttribute('href');
}

async function ask(what) {
	try {
		const answer = await fetch(what);
		return answer.ok ? await answer.json() : null;
	} catch {
		return null; // the hotspot is off, or the phone left it
	}
}

// --- the live picture ---

let isStarting = false;
let looksWithout = 0;

function stopPicture(sign) {
	picture.removeAttribute('src');
	isStarting = false;
	live.dataset.state = sign;
}

picture.onload = () => {
	isStarting = false;
	looksWithout = 0;
	live.dataset.state = 'on';
	stayAwake();
};
picture.onerror = () => {
	isStarting = false;
	if (live.dataset.state !== 'full')
		live.dataset.state = 'off';
};

function followPicture(state) {
	if (live.dataset.state === 'on') {
		looksWithout = state && state.live ? 0 : looksWithout + 1;
		if (looksWithout >= kPatience)
			stopPicture('off');
		return;
	}
	if (!state || state.full)
		live.dataset.state = state ? 'full' : 'off';
	else if (live.dataset.state === 'full')
		live.dataset.state = '';
	if (state && !state.full && !isStarting) {
		isStarting = true;
		picture.src = '/live?' + Date.now();
	}
}

// --- the screen stays on ---

// Without a secure context a browser has no wake lock: then a film does it that the page draws itself, a black
// point, behind the picture.
let lock = null;
let point = null;

async function stayAwake() {
	try {
		if (navigator.wakeLock)
			lock = lock && !lock.released ? lock : await navigator.wakeLock.request('screen');
		else
			await playPoint();
	} catch {
		// a phone that does not want to stays as its owner set it
	}
}

function playPoint() {
	const film = byId('awake');
	if (!point) {
		point = make('canvas', {width: 16, height: 16}).getContext('2d');
		film.srcObject = point.canvas.captureStream(1);
		setInterval(() => point.fillRect(0, 0, 16, 16), kLookMs);
	}
	return film.play();
}

// --- full screen ---

byId('larger').onclick = async () => {
	const isWhole = live.classList.toggle('whole'); // also where a phone has no full screen for pages
	try {
		if (isWhole)
			await live.requestFullscreen();
		else if (document.fullscreenElement)
			await document.exitFullscreen();
	} catch {
		// the picture fills the window all the same
	}
};
document.onfullscreenchange = () => live.classList.toggle('whole', Boolean(document.fullscreenElement));

// --- folders and captures ---

let shownFolders = '';
let captures = []; // of the folder that is open
const isFilm = (capture) => /\.avi$/i.test(capture.name);

// "#/folder" is open, "#/folder/TUBX0001.jpg" is looked at: the way back is the browser's own.
function place() {
	const names = location.hash.slice(2).split('/').filter(Boolean).map(decodeURIComponent);
	return {folder: names[0] || '', capture: names[1] || ''};
}
const placeOf = (folder, capture) => '#/' + [folder, capture].filter(Boolean).map(encodeURIComponent).join('/');

function folderItem(folder) {
	const row = make('div', {className: 'row'},
		make('a', {className: 'name'}, symbol('folder'), make('span', {textContent: folder.name})));
	if (folder.page)
		row.append(make('a', {className: 'tile', href: address('/files', folder.name, folder.page), ariaLabel: 'Page'}, symbol('catalog')));
	row.append(make('a', {className: 'tile', href: address('/zip', folder.name), ariaLabel: 'All as one file', download: ''}, symbol('save')));
	const item = make('li', {}, row);
	item.dataset.name = folder.name;
	return item;
}

function captureItem(folder, capture) {
	const room = isFilm(capture) ? '/first' : '/files';
	const item = make('a', {className: 'capture', href: placeOf(folder, capture.name), ariaLabel: capture.name},
		make('img', {loading: 'lazy', alt: '', src: address(room, folder, capture.name)}));
	const mark = isFilm(capture) ? symbol('film') : capture.note ? symbol('microphone') : '';
	if (mark)
		mark.setAttribute('class', 'mark');
	item.append(mark);
	return item;
}

async function showOpenFolder() {
	const {folder} = place();
	for (const item of byId('folders').children) {
		const isOpen = item.dataset.name === folder;
		item.classList.toggle('opened', isOpen);
		item.querySelector('.name').href = placeOf(isOpen ? '' : item.dataset.name, '');
		if (!isOpen && item.children.length > 1)
			item.lastChild.remove();
	}
	const item = byId('folders').querySelector('.opened');
	const found = item ? await ask(address('/folders', folder)) || [] : [];
	if (folder !== place().folder)
		return; // another one was opened meanwhile
	if (item && (JSON.stringify(found) !== JSON.stringify(captures) || item.children.length < 2)) {
		if (item.children.length > 1)
			item.lastChild.remove();
		item.append(make('div', {className: 'captures'}, ...found.map((capture) => captureItem(folder, capture))));
	}
	captures = found;
	showCapture();
}

function showCapture() {
	const {folder, capture} = place();
	const index = captures.findIndex((each) => each.name === capture);
	const view = byId('capture');
	const voice = byId('voice');
	view.hidden = index < 0;
	voice.pause();
	if (index < 0)
		return;
	const each = captures[index];
	byId('still').src = address(isFilm(each) ? '/first' : '/files', folder, each.name);
	byId('filmmark').style.display = isFilm(each) ? '' : 'none';
	voice.hidden = !each.note;
	if (each.note)
		voice.src = address('/files', folder, each.note);
	byId('keep').href = address('/files', folder, each.name);
	byId('close').href = placeOf(folder, '');
	for (const [id, neighbour] of [['previous', captures[index - 1]], ['next', captures[index + 1]]])
		setAddress(byId(id), neighbour && placeOf(folder, neighbour.name));
}

async function followCard(isOpen) {
	const folders = isOpen ? await ask('/folders') : null;
	findings.dataset.state = !folders ? 'closed' : folders.length ? 'open' : 'empty';
	const text = JSON.stringify(folders);
	if (text !== shownFolders)
		byId('folders').replaceChildren(...(folders || []).map(folderItem));
	shownFolders = text;
	await showOpenFolder();
}

onhashchange = () => {
	showCapture();
	showOpenFolder();
};

// --- the look at the unit ---

let filesWereOpen = null;
let foldersAt = 0;

async function look() {
	const state = await ask('/state');
	if (document.hidden)
		return;
	followPicture(state);
	const filesAreOpen = Boolean(state && state.files);
	if (filesAreOpen !== filesWereOpen || Date.now() - foldersAt > kFoldersMs) {
		filesWereOpen = filesAreOpen;
		foldersAt = Date.now();
		await followCard(filesAreOpen);
	}
}

// A page that nobody sees takes no picture.
document.onvisibilitychange = () => {
	if (document.hidden)
		stopPicture('');
	else
		look();
};

setInterval(() => document.hidden || look(), kLookMs);
look();
