// The inspector page: what the service holds, the requests as they arrive, and its faults. Every
// value goes into the page as text (textContent), never as markup, so that a device description
// or a body holding HTML shows as what it is.
"use strict";

const requests = [];

function cell(row, text) {
    const td = document.createElement("td");
    td.textContent = text === undefined || text === null ? "" : String(text);
    row.appendChild(td);
    return td;
}

function fill(tableId, items, columns) {
    const body = document.querySelector(`#${tableId} tbody`);
    body.replaceChildren();
    for (const item of items) {
        const row = document.createElement("tr");
        for (const column of columns)
            cell(row, column(item));
        body.appendChild(row);
    }
}

function say(text, failed) {
    const status = document.getElementById("status");
    status.textContent = text;
    status.className = failed ? "failed" : "";
}

async function send(method, path, json) {
    const response = await fetch(path, {
        method,
        headers: json === undefined ? {} : {"Content-Type": "application/json"},
        body: json === undefined ? undefined : JSON.stringify(json),
    });
    if (!response.ok)
        throw new Error(`${method} ${path}: ${response.status} ${await response.text()}`);
    return response;
}

function showPreferences(owners) {
    const container = document.getElementById("preferences");
    container.replaceChildren();
    for (const owner of owners) {
        const title = document.createElement("div");
        title.className = "owner";
        title.textContent = `${owner.owner} ${owner.id}`;
        container.appendChild(title);
        for (const category of owner.document) {
            const heading = document.createElement("div");
            heading.className = "category";
            heading.textContent = `${category.name} (${category.key})`;
            container.appendChild(heading);
            for (const preference of category.preferences) {
                const label = document.createElement("label");
                label.className = "preference";
                const box = document.createElement("input");
                box.type = "checkbox";
                box.checked = Boolean(preference.enabled);
                box.dataset.owner = owner.owner;
                box.dataset.id = owner.id;
                box.dataset.category = category.key;
                box.dataset.preference = preference.key;
                box.addEventListener("change", () => switchPreference(box));
                label.appendChild(box);
                label.appendChild(document.createTextNode(` ${preference.name} (${preference.key})`));
                container.appendChild(label);
            }
        }
    }
}

async function switchPreference(box) {
    try {
        await send("POST", "/_sim/preferences", {
            owner: box.dataset.owner, id: box.dataset.id, category: box.dataset.category,
            preference: box.dataset.preference, enabled: box.checked,
        });
    } catch (error) {
        box.checked = !box.checked;
        say(error.message, true);
    }
}

async function loadFaults() {
    const faults = await (await send("GET", "/_sim/faults")).json();
    fill("faults", faults, [f => f.method, f => f.path, f => f.status, f => f.body, f => f.delay_ms,
                            f => f.drop_connection ? "yes" : "", f => f.stall_after_half ? "yes" : "",
                            f => f.times < 0 ? "until cleared" : f.times]);
}

async function loadState() {
    const state = await (await send("GET", "/_sim/state")).json();
    fill("devices", state.devices, [d => d.uuid, d => d.user, d => d.push_token,
                                     d => JSON.stringify(d.description), d => d.registered]);
    fill("tokens", state.tokens, [t => t.token, t => t.expires]);
    showPreferences(state.preferences);
}

function showRequests() {
    const filter = document.getElementById("filter").value;
    const shown = requests.filter(r => r.path.includes(filter));
    fill("requests", shown.slice().reverse(), [
        r => r.time, r => r.method, r => r.path + (r.query ? "?" + r.query : ""), r => r.status,
        r => r.headers.map(([name, value]) => `${name}: ${value}`).join("\n"), r => r.body,
        r => r.answer,
    ]);
}

async function start() {
    document.getElementById("filter").addEventListener("input", showRequests);
    document.getElementById("clear-requests").addEventListener("click", async () => {
        await send("DELETE", "/_sim/requests");
        requests.length = 0;
        showRequests();
    });
    document.getElementById("fault").addEventListener("submit", async event => {
        event.preventDefault();
        const form = event.target.elements;
        const fault = {method: form.method.value, path: form.path.value,
                       delay_ms: Number(form.delay_ms.value), times: Number(form.times.value),
                       drop_connection: form.drop_connection.checked,
                       stall_after_half: form.stall_after_half.checked};
        if (form.status.value !== "")
            fault.status = Number(form.status.value);
        if (form.body.value !== "")
            fault.body = form.body.value;
        const result = document.getElementById("fault-result");
        try {
            await send("POST", "/_sim/faults", fault);
            result.textContent = `Fault added on ${fault.method} ${fault.path}`;
            result.className = "";
            await loadFaults();
        } catch (error) {
            result.textContent = error.message;
            result.className = "failed";
        }
    });
    document.getElementById("clear-faults").addEventListener("click", async () => {
        await send("DELETE", "/_sim/faults");
        document.getElementById("fault-result").textContent = "Faults cleared";
        await loadFaults();
    });

    requests.push(...await (await send("GET", "/_sim/requests")).json());
    showRequests();
    await loadState();
    await loadFaults();
    const events = new EventSource("/_sim/events");
    events.addEventListener("open", () => say("Live"));
    events.addEventListener("error", () => say("Disconnected; retrying…", true));
    events.addEventListener("request", event => {
        requests.push(JSON.parse(event.data));
        showRequests();
        loadFaults().catch(error => say(error.message, true)); // one may have been used up
    });
    events.addEventListener("state", () => loadState().catch(error => say(error.message, true)));
}

start().catch(error => say(error.message, true));
