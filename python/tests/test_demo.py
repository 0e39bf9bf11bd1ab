"""The demo's answers to good and bad files, and the inputs that it builds by itself."""

import re
import time

import numpy as np
import pytest

from zeltbraidwerk import CnotCircuit, demo, gallery


@pytest.fixture
def given(tmp_path, monkeypatch, capsys):
    """Runs the demo on a file of that content; exit code, standard output, standard error."""
    monkeypatch.chdir(tmp_path)

    def run(content: bytes | None):
        file = tmp_path / "matrix.txt"
        if content is not None:
            file.write_bytes(content)
        code = demo.main([str(file)])
        return code, *capsys.readouterr()

    return run


@pytest.mark.parametrize(
    ("content", "complaint"),
    [
        (b"\n  \n", "is empty"),
        (b"\n10\n011\n", "line 3: 3 digits, but line 2 has 2"),
        (b"101\n011\n", "2 rows of 3 digits are not a square matrix"),
        (b"10\n0x\n", "line 2: 'x' is neither 0 nor 1"),
        (b"110\n011\n101\n", "singular, of rank 2 instead of 3"),
        (b"\xff\xfe\n", "is not a text of 0 and 1"),
        (None, "cannot read"),
    ],
)
def test_bad_file_gives_one_line_and_exit_code_2(given, content, complaint):
    code, out, err = given(content)
    assert code == 2
    assert out == ""
    assert complaint in err
    assert err.startswith("demo: ")
    assert err.count("\n") == 1


@pytest.mark.parametrize(
    "content",
    [b"1", b"1 1 0\n0,1,1\n\n0 0 1".replace(b",", b" "), b"0100\r\n1000\r\n0001\r\n0011\r\n"],
)
def test_good_file_is_synthesised_verified_and_drawn(given, tmp_path, content):
    code, out, err = given(content)
    assert (code, err) == (0, "")
    assert "gauss" in out
    assert "pmh" in out
    assert " NO" not in out
    assert (tmp_path / "demo.svg").read_text().lstrip().startswith("<svg")


def test_search_on_a_device_takes_seconds_and_tells_how_far_it_is(tmp_path, capsys):
    screen = demo.Screen()
    screen.live = True
    start = time.process_time()
    assert demo.device_section(screen, None, tmp_path / "demo.svg")
    assert time.process_time() - start < 15
    found = re.findall(r"\r\033\[Ksearch \.\.\. (\d+) CNOTs so far", capsys.readouterr().out)
    assert len(found) > 1
    assert sorted(found, key=int, reverse=True) == found


def test_replay_finds_a_wrong_circuit():
    matrix = np.array([[1, 0], [1, 1]], dtype=bool)  # output 1 is input 0 XOR input 1
    wanted = demo._as_ints(matrix)
    assert demo._replay(CnotCircuit(2, [(0, 1)]), [0, 1]) == wanted
    assert demo._replay(CnotCircuit(2, [(1, 0)]), [0, 1]) != wanted
    # The same map with its outputs on each other's wires.
    assert demo._replay(CnotCircuit(2, [(1, 0), (0, 1)]), [1, 0]) == wanted


def test_mixcolumns_acts_as_its_standard_says():
    # Columns and their images, from the worked examples in the standard's literature.
    mix = gallery.aes_mixcolumns().astype(int)
    for column, image in [
        ("db135345", "8e4da1bc"),
        ("f20a225c", "9fdc589d"),
        ("01010101", "01010101"),
        ("d4bf5d30", "046681e5"),
    ]:
        bits = np.unpackbits(np.frombuffer(bytes.fromhex(column), np.uint8), bitorder="little")
        mixed = np.packbits(mix @ bits % 2, bitorder="little").tobytes()
        assert mixed.hex() == image


def test_gallery_matrices_are_invertible_and_repeatable():
    layers = gallery.cipher_layers().values()
    for matrix in [*layers, *gallery.random_invertible(9, 3), *gallery.random_invertible(1, 1)]:
        assert gallery.rank(demo._as_ints(matrix)) == len(matrix)
    first, again = gallery.random_invertible(8, 2), gallery.random_invertible(8, 2)
    assert np.array_equal(first, again)
    assert "".join("01"[int(bit)] for bit in first[0].ravel()).startswith("1100111011111000")
    inverse = gallery.cipher_layers()["aes_inv_mixcolumns"].astype(int)
    assert np.array_equal(inverse @ gallery.aes_mixcolumns() % 2, np.eye(32))
