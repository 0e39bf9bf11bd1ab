"""The optimization stage of Qiskit's transpiler."""

from __future__ import annotations

import copy
from collections.abc import Iterable
from typing import Any

from qiskit.converters import dag_to_circuit
from qiskit.exceptions import QiskitError
from qiskit.passmanager import PassManagerState, PropertySet, WorkflowStatus
from qiskit.transpiler import PassManager, TransformationPass
from qiskit.transpiler.passes import GateDirection
from qiskit.transpiler.preset_passmanagers.plugin import (
    PassManagerStagePlugin,
    PassManagerStagePluginManager,
)

from zeltbraidwerk.qiskit._cost import Cost, cost
from zeltbraidwerk.qiskit._pass import Optimize

_STEPS = {1: 20_000, 2: None, 3: None}  # by the optimization level; None: as by default


class OptimizationStage(PassManagerStagePlugin):  # type: ignore[misc]
    """The plugin ``zeltbraidwerk`` of the optimization stage: :class:`Optimize`, then translation
    to the gates of the target and Qiskit's own stage; or Qiskit's own stage alone where that
    gives fewer two-qubit gates, or as many in fewer layers.

    The seed is that of the transpiler. Level 1 searches for a tenth of a second, levels 2 and 3
    for a second or more; level 0 optimises nothing.
    """

    def pass_manager(
        self, pass_manager_config: Any, optimization_level: int | None = None
    ) -> PassManager | None:
        """The stage for a configuration of the transpiler and a level, 0 to 3."""
        level = 2 if optimization_level is None else optimization_level
        plain = _stage("optimization", pass_manager_config, level)
        if plain is None or level == 0:
            return plain
        config = pass_manager_config
        target = config.target
        seed = config.seed_transpiler
        passes = PassManager([Optimize(
            coupling_map=config.coupling_map, target=target,
            seed=None if seed is None else int(seed), steps=_STEPS.get(level),
        )])  # fmt: skip
        translation = _stage("translation", config, level)
        if translation is not None:
            passes += translation
        if config.coupling_map is not None and not config.coupling_map.is_symmetric:
            passes.append(GateDirection(config.coupling_map, target))
        passes += _stage("optimization", config, level)
        native = () if target is None else target.operation_names
        return PassManager([_Better(plain, passes, tuple(native))])


def _stage(name: str, config: Any, level: int) -> PassManager | None:
    """Qiskit's own."""
    method = getattr(config, f"{name}_method", None) if name == "translation" else None
    return PassManagerStagePluginManager().get_passmanager_stage(
        name, method or "default", config, optimization_level=level
    )


class _Better(TransformationPass):  # type: ignore[misc]
    """Runs two sequences of passes on the circuit and keeps the smaller result, with what its
    passes found out. Ties: the first. The second may fail."""

    def __init__(self, first: PassManager, second: PassManager, native: Iterable[str]) -> None:
        super().__init__()
        self._sequences = (first, second)
        self._native = frozenset(native)

    def run(self, dag: Any) -> Any:
        found: list[tuple[Cost, Any, PropertySet]] = []
        for sequence in self._sequences:
            status, known = WorkflowStatus(), PropertySet(self.property_set)
            try:
                made, state = sequence.to_flow_controller().execute(
                    copy.deepcopy(dag), PassManagerState(status, known)
                )
            except QiskitError:
                if not found:
                    raise
                continue
            size = cost(dag_to_circuit(made, copy_operations=False), "count", self._native)
            found.append((size, made, state.property_set))
        _, best, properties = min(found, key=lambda each: each[0])
        self.property_set.clear()
        self.property_set.update(properties)
        return best
