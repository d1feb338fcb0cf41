// What the browser keeps for its next visit: a record for each open page, so that no page overwrites another's, and
// the unsaved documents that were put aside when another was opened.

export interface Kept {
    name: string;
    bytes: Uint8Array;
    time: number;
    clean: boolean;
}

export interface Lost extends Kept {
    id: string;
    /** Another document was opened in its place; otherwise its page was closed. */
    isAside: boolean;
}

const area = "documents";
const prefix = "fcurve-editor ";
/** Bytes; browsers give a page five million characters or so. */
const mostStashed = 1500000;
/** So many documents without a page are kept. */
const most = 20;

const newId = () => `${Date.now().toString(36)}-${Math.random().toString(36).slice(2, 10)}`;
/** Of a document put aside: "PAGE~ID". */
const ownerOf = (id: string) => id.split("~")[0]!;

export class Store {
    private id = "";
    private release = () => {};
    // Only in secure contexts: without them nobody knows whether a page is still open.
    private readonly locks = (navigator as { locks?: LockManager }).locks;

    private constructor(private readonly database: IDBDatabase) {
        database.onversionchange = () => database.close();
        addEventListener("pagehide", () => this.release());
        addEventListener("pageshow", (event) => {
            if (event.persisted) void this.claim(this.id, 0);
        });
    }

    /**
     * The store, and what this page had when it was left, by a reload or for another page of its history; else what the
     * tab had before. Throws where the browser keeps nothing.
     */
    static async open(): Promise<{ store: Store; own: Kept | undefined; isReturn: boolean }> {
        const database = await new Promise<IDBDatabase>((resolve, reject) => {
            const request = indexedDB.open("fcurve-editor", 1);
            request.onupgradeneeded = () => request.result.createObjectStore(area);
            request.onsuccess = () => resolve(request.result);
            request.onerror = () => reject(request.error);
        });
        const store = new Store(database);
        await store.unstash();
        const left = (history.state as Record<string, string> | null)?.[area];
        const id = left ?? sessionStorage.getItem(area);
        const own = id === null ? undefined : await store.run<Kept | undefined>("readonly", (documents) => documents.get(id));
        // A page that was duplicated starts with the same document under an id of its own. One that is being left lets
        // go of its id, which may take a moment.
        if (id === null || !(await store.claim(id, 1000))) await store.leave();
        return { store, own, isReturn: left !== undefined };
    }

    /** Goes on under a new id; the record stays, as one whose page was closed. */
    async leave(): Promise<void> {
        await this.claim(newId(), 1000);
    }

    /** Goes on with the record of a page that was closed; false where that cannot be told, or another was faster. */
    async takeOver(id: string): Promise<boolean> {
        return this.locks !== undefined && this.claim(id, 0);
    }

    /** Makes an id this page's own, as long as no other page has it. */
    private async claim(id: string, patience: number): Promise<boolean> {
        const isMine = !this.locks || (await new Promise<boolean>((resolve) => {
            const options = patience > 0 ? { signal: AbortSignal.timeout(patience) } : { ifAvailable: true };
            this.locks!.request(prefix + id, options, (lock) => {
                resolve(lock !== null);
                return lock && new Promise<void>((done) => {
                    this.release();
                    this.release = done;
                });
            }).catch((error: DOMException) => resolve(!/^(Abort|Timeout)Error$/.test(error.name)));
        }));
        if (!isMine) return false;
        this.id = id;
        sessionStorage.setItem(area, id);
        history.replaceState({ [area]: id }, "");
        return true;
    }

    private run<T>(mode: IDBTransactionMode, act: (documents: IDBObjectStore) => IDBRequest<T>): Promise<T> {
        return new Promise((resolve, reject) => {
            const transaction = this.database.transaction(area, mode);
            const request = act(transaction.objectStore(area));
            transaction.oncomplete = () => resolve(request.result);
            transaction.onabort = transaction.onerror = () => reject(transaction.error);
            transaction.commit(); // of its own accord only after the next event, which a page that is left never sees
        });
    }

    async write(kept: Kept): Promise<void> {
        await this.run("readwrite", (documents) => documents.put(kept, this.id));
    }

    /**
     * As write(), for a page that is being left: what it asks of the database then may be dropped, what it puts into
     * the small storage is not.
     */
    stash(kept: Kept): void {
        void this.write(kept).catch(() => {});
        if (kept.bytes.length > mostStashed) return;
        const bytes = btoa(Array.from(kept.bytes, (byte) => String.fromCharCode(byte)).join(""));
        try {
            localStorage.setItem(prefix + this.id, JSON.stringify({ ...kept, bytes }));
        } catch {
            // It is full; the database may yet do.
        }
    }

    /** Into the database what pages that were left could put into the small storage only. */
    private async unstash(): Promise<void> {
        for (const key of Object.keys(localStorage).filter((each) => each.startsWith(prefix))) {
            const id = key.slice(prefix.length);
            let kept: Kept;
            try {
                const stashed = JSON.parse(localStorage.getItem(key)!) as Omit<Kept, "bytes"> & { bytes: string };
                kept = { ...stashed, bytes: Uint8Array.from(atob(stashed.bytes), (byte) => byte.charCodeAt(0)) };
            } catch {
                localStorage.removeItem(key); // not what a page put there
                continue;
            }
            const old = await this.run<Kept | undefined>("readonly", (documents) => documents.get(id));
            if (!old || old.time < kept.time) await this.run("readwrite", (documents) => documents.put(kept, id));
            localStorage.removeItem(key);
        }
    }

    /** Keeps a document in whose place another was opened; the result is for remove(). */
    putAside(kept: Kept): string {
        const id = `${this.id}~${newId()}`;
        void this.run("readwrite", (documents) => documents.put(kept, id)).catch(() => {});
        return id;
    }

    async remove(id: string): Promise<void> {
        await this.run("readwrite", (documents) => documents.delete(id));
    }

    /** Unsaved documents that no open page shows, the newest first; drops what nobody will ask for. */
    async lost(): Promise<Lost[]> {
        const query = await this.locks?.query().catch(() => undefined);
        const held = new Set((query?.held ?? []).map((lock) => lock.name));
        const [ids, all] = await Promise.all([
            this.run("readonly", (documents) => documents.getAllKeys()) as Promise<string[]>,
            this.run("readonly", (documents) => documents.getAll()) as Promise<Kept[]>,
        ]);
        const closed = ids.map((id, i) => ({ ...all[i]!, id, isAside: id.includes("~") }))
            .filter(({ id }) => id !== this.id && (ownerOf(id) === this.id || !held.has(prefix + ownerOf(id))))
            .sort((a, b) => b.time - a.time);
        const lost = closed.filter((each) => !each.clean);
        if (query) for (const { id } of [...closed.filter((each) => each.clean), ...lost.splice(most)]) await this.remove(id);
        return lost;
    }
}
