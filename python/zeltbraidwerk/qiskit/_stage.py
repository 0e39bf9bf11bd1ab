"""The optimization stage of Qiskit's transpiler."""

from __future__ import annotations

import copy
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
    gives fewer two-qubit gates, or as many in fewer layers. No circuit has more of either than by
    Qiskit's own stage: where fewer gates take more layers, its circuit is made shorter in no more.

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
        return PassManager([_Better(plain, pass_manager_config, level)])


def _stage(name: str, config: Any, level: int) -> PassManager | None:
    """Qiskit's own."""
    method = getattr(config, f"{name}_method", None) if name == "translation" else None
    return PassManagerStagePluginManager().get_passmanager_stage(
        name, method or "default", config, optimization_level=level
    )


class _Better(TransformationPass):  # type: ignore[misc]
    """Qiskit's own stage, and the same with a shorter circuit; keeps the smaller result, with what
    its passes found out. Ties: Qiskit's own."""

    def __init__(self, plain: PassManager, config: Any, level: int) -> None:
        super().__init__()
        self._plain, self._config, self._level = plain, config, level
        target = config.target
        self._native = frozenset(() if target is None else target.operation_names)

    def run(self, dag: Any) -> Any:
        plain = self._found(self._plain, dag)
        count, depth, _ = plain[0]
        found = [plain]
        for keep_depth, start in ((False, dag), (True, plain[1])):
            try:
                shorter = self._found(self._passes(keep_depth), start)
            except QiskitError:
                continue
            if shorter[0][0] <= count and shorter[0][1] <= depth:
                found.append(shorter)
            if shorter[0][0] >= count or shorter[0][1] <= depth:
                break
        _, best, properties = min(found, key=lambda each: each[0])
        self.property_set.clear()
        self.property_set.update(properties)
        return best

    def _found(self, passes: PassManager, dag: Any) -> tuple[Cost, Any, PropertySet]:
        status, known = WorkflowStatus(), PropertySet(self.property_set)
        made, state = passes.to_flow_controller().execute(
            copy.deepcopy(dag), PassManagerState(status, known)
        )
        size = cost(dag_to_circuit(made, copy_operations=False), "count", self._native)
        return size, made, state.property_set

    def _passes(self, keep_depth: bool) -> PassManager:
        """:class:`Optimize`, and what makes its circuits those of the target."""
        config = self._config
        seed = config.seed_transpiler
        passes = PassManager([Optimize(
            coupling_map=config.coupling_map, target=config.target,
            seed=None if seed is None else int(seed), steps=_STEPS.get(self._level),
            keep_depth=keep_depth,
        )])  # fmt: skip
        translation = _stage("translation", config, self._level)
        if translation is not None:
            passes += translation
        if config.coupling_map is not None and not config.coupling_map.is_symmetric:
            passes.append(GateDirection(config.coupling_map, config.target))
        passes += _stage("optimization", config, self._level)
        return passes
