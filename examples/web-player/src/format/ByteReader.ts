import { PlayerError } from '../errors';


/**
 * Reads big-endian fields from the front of a block of bytes.
 *
 * Every read throws a PlayerError that names `what` when the bytes end too early.
 */
export class ByteReader {
    private readonly view: DataView;
    private at = 0;

    constructor(
        readonly bytes: Uint8Array,
        private readonly what: string,
    ) {
        this.view = new DataView(bytes.buffer, bytes.byteOffset, bytes.byteLength);
    }

    get position(): number {
        return this.at;
    }

    get left(): number {
        return this.bytes.length - this.at;
    }

    u8(): number {
        return this.view.getUint8(this.step(1));
    }

    u16(): number {
        return this.view.getUint16(this.step(2));
    }

    u24(): number {
        const at = this.step(3);
        return (this.view.getUint16(at) << 8) | this.view.getUint8(at + 2);
    }

    u32(): number {
        return this.view.getUint32(this.step(4));
    }

    /** Up to 2^53: files and times of more don't exist here, and are refused. */
    u64(): number {
        const value = this.view.getBigUint64(this.step(8));
        if (value > BigInt(Number.MAX_SAFE_INTEGER)) throw this.broken('a number is too large');
        return Number(value);
    }

    /** A byte offset of 4 or 8 bytes; null where all bits are set, which means "none". */
    offset(long: boolean): number | null {
        const at = this.step(long ? 8 : 4);
        const value = long ? this.view.getBigUint64(at) : BigInt(this.view.getUint32(at));
        if (value === (long ? 0xffffffffffffffffn : 0xffffffffn)) return null;
        if (value > BigInt(Number.MAX_SAFE_INTEGER)) throw this.broken('an offset is too large');
        return Number(value);
    }

    fourCC(): string {
        return String.fromCharCode(...this.take(4));
    }

    /** Bytes up to a zero byte, which is passed over. */
    string(): string {
        const end = this.bytes.indexOf(0, this.at);
        if (end < 0) throw this.broken('a text has no end');
        const text = new TextDecoder().decode(this.bytes.subarray(this.at, end));
        this.at = end + 1;
        return text;
    }

    take(size: number): Uint8Array {
        const at = this.step(size);
        return this.bytes.subarray(at, at + size);
    }

    skip(size: number): void {
        this.step(size);
    }

    /** A count of entries of at least `entrySize` bytes each, checked against the bytes left. */
    count(value: number, entrySize: number): number {
        if (value > this.left / entrySize) throw this.broken('a table is longer than the file');
        return value;
    }

    broken(reason: string): PlayerError {
        return new PlayerError(`${this.what} is damaged: ${reason}.`);
    }

    private step(size: number): number {
        if (size > this.left) throw this.broken('it ends too early');
        const at = this.at;
        this.at += size;
        return at;
    }
}

/** The header of a box; `size` is that of the whole box, 0 when the box doesn't tell. */
export interface BoxHeader {
    size: number;
    type: string;
    headerSize: number;
}

export function readBoxHeader(reader: ByteReader): BoxHeader {
    const size = reader.u32();
    const type = reader.fourCC();
    return size === 1
        ? { size: reader.u64(), type, headerSize: 16 }
        : { size, type, headerSize: 8 };
}
